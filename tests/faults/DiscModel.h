#pragma once

#include "tests/faults/FaultyDisc.h"

#include <map>
#include <random>
#include <set>

/// What a folder holds: the contents of the files by their paths, and the folders, as "name/".
using FolderContents = std::map<std::string, std::string>;

/// A disc that loses power: it follows the steps of a process, and tells what it may then hold.
/// Only what was synced is sure: the bytes of a file by a sync of the file, the names in a folder
/// by a sync of the folder. All else may be there, in part and in any order, or not.
class DiscModel {
public:
    /// A disc at rest, on which everything is sure.
    explicit DiscModel(const FolderContents& contents);

    void follow(const DiscStep& step);

    /// As every process sees it while there is power.
    FolderContents inq_live() const;

    /// What it may hold after a power cut now: at most `most` states, without repetition, the
    /// telling ones first.
    std::set<FolderContents> inq_after_power_cut(std::size_t most, std::mt19937& random) const;

private:
    struct BytesStep {
        std::int64_t at;
        std::string bytes;
        bool cuts_off; // to the length `at`
    };
    struct File {
        std::string sure;
        std::vector<BytesStep> unsure;
    };
    using Names = std::map<std::string, int>; // of files by their number, or IS_FOLDER
    static constexpr int IS_FOLDER = -1;

    struct NameStep {
        std::string folder;   // whose sync makes it sure
        std::string old_name; // goes, if any
        std::string new_name; // comes, if any, and means `file`
        int file;
    };

    /// How much of what is unsure has reached the disc.
    struct Fate {
        enum Bytes { ALL, NONE, HALF, ZEROS, MIXED };
        std::vector<bool> names;
        Bytes bytes;
    };

    static std::string folder_of(const std::string& path);
    static void apply(const BytesStep& step, std::string& contents, bool as_zeros);
    static void apply(const NameStep& step, Names& names);

    void change_names(NameStep step);
    void change_bytes(const DiscStep& step);
    void sync(const std::string& path, int descriptor);
    static void settle(File& file);
    void sync_names(const std::string& folder);
    std::string contents_of(const File& file, Fate::Bytes bytes, std::mt19937& random) const;
    FolderContents inq_contents(const Fate& fate, std::mt19937& random) const;
    std::vector<std::vector<bool>> choose_names(std::size_t most, std::mt19937& random) const;

    std::vector<File> files;
    Names live_names;
    Names sure_names;
    std::vector<NameStep> unsure_names;
    std::map<int, int> open_files; // number of the file by descriptor
};
