#pragma once

#include "kivlib/hdr/BaseFileFinder.h"

#include <map>
#include <string>
#include <vector>

/// Where a program without a window looks for lost files: under other beginnings of their paths,
/// and by name in folders. It remembers what became of each file, for one report at the end.
class FileSearch {
public:
    /// Looked through in the order of addition; their sub-folders are not.
    void add_search_folder(const KIVString& folder);

    /// A lost file under the folder `from` is looked for at the same place under `to`.
    void add_prefix_map(const KIVString& from, const KIVString& to);

    /// Where `path` lies now: itself if it is there, or lost.
    KIVString find(const KIVString& path);

    int inq_found_count() const;
    int inq_lost_count() const;

    /// Files that are not at their place, a line each, and a line with their numbers.
    KIVString report() const;

private:
    struct PrefixMap {
        std::string from;
        std::string to;
    };

    KIVString look_for(const KIVString& path) const;
    KIVString find_by_prefix(std::string_view path) const;
    KIVString find_in_folders(const KIVString& tail) const;

    std::vector<KIVString> folders;
    std::vector<PrefixMap> prefix_maps;
    std::map<std::string, KIVString>
        places; // of files that were not at theirs; empty for lost ones
};

/// Finds files for one load by a search that outlives it. No load is given up for a lost file.
class SearchFileFinder : public BaseFileFinder {
public:
    explicit SearchFileFinder(FileSearch& search) : search(search) {}

    KIVString find_replacement(const KIVFile& file, const char* title, bool* leave) override;
    bool files_were_replaced() override { return was_any_replaced; }

private:
    FileSearch& search;
    bool was_any_replaced = false;
};
