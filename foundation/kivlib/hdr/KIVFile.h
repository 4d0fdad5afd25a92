#pragma once

#include "kivlib/hdr/KIVString.h"

#include <memory>
#include <optional>

class KIVFileReferenceList;
class KvdRecord;

/// A path with more to it: itself the local path, as a string, and with a portable path and a
/// record of references to other files, its `kvd`, which lies beside it.
class KIVFile : public KIVString {
public:
    KIVFile();
    explicit KIVFile(const KIVString& local_path);

    /// A copy has the paths and reads its own record.
    KIVFile(const KIVFile& other);
    KIVFile& operator=(const KIVFile& other);
    ~KIVFile() override;

    /// Kept as it is given, but for slashes at its end. A relative one is meant from the working
    /// directory of this moment.
    void set_local_path(const KIVString& path);

    /// The path with slashes between its components. A path of another platform, with
    /// backslashes, is turned into one; it becomes the local path too, and stays relative if it is.
    void set_universal_or_legacy_path(const KIVString& path);
    const KIVString& inq_universal_path() const { return universal_path; }

    /// For a file that is lost: where it should lie, going by its place in the project.
    void set_universal_path(const KIVString& path) { universal_path = path; }

    /// The path from this folder to `target`, with slashes: the shortest one that still leads
    /// there when both move together, whichever symbolic links were used to name them.
    KIVString inq_way_to(const KIVString& target) const;

    /// The name shown to users: the one given, or else the file's without folder and extension.
    KIVString get_user_name() const;
    void set_user_name(const KIVString& name) { user_name = name; }

    /// The list kept under `key` in the record, or null. The file keeps it.
    const KIVFileReferenceList* inq_reference_list_value(const KIVString& key) const;

    /// Stores a copy; null takes the list away. The record reaches the disc by `save_kvd`.
    void set_reference_list_value(const KIVString& key, const KIVFileReferenceList* list);

    /// Writes the record to its side file: finished or, on failure, as it was. The user is told.
    bool save_kvd();

    /// Writes or reads the record where somebody else keeps the file.
    void insert_kvd(KIVOStream& stream);
    void extract_kvd(KIVIStream& stream);

private:
    struct Way {
        KIVString to; // a folder
        KIVString path;
    };

    void set_path(std::string_view path);
    KvdRecord& inq_record() const;
    KIVString find_way_to_folder(const KIVString& target) const;

    KIVString universal_path;
    std::optional<KIVString> user_name;        // it may be empty
    mutable std::unique_ptr<KvdRecord> record; // null until it is asked for
    mutable std::unique_ptr<Way> last_way;     // files mostly share their folder; null at first
};
