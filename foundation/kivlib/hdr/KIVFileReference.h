#pragma once

#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/StoredClass.h"

#include <vector>

/// That one file, often a scene folder, refers to another. Both the local path of the target and
/// its place relative to the folder are kept, so a project that moved as a whole finds its files.
class KIVFileReference : public KIVObject {
    KIV_STORED(KIVFileReference, KIVObject);

public:
    KIVFileReference(const KIVFile& from, const KIVFile& to, const KIVString& kind);
    explicit KIVFileReference(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    const KIVString& inq_kind() const { return kind; }

    /// The target as seen from `folder`: by its relative path if a file is there, else by its
    /// local path. `real_folder` is the folder without symbolic links and goes before it.
    KIVFile inq_target(const KIVString& folder, const KIVString& real_folder) const;

private:
    template <class Record> void record(Record& r);
    KIVString inq_place_in(const KIVString& folder) const;
    bool find_target_in(const KIVString& folder, KIVFile& target) const;

    KIVString kind;
    KIVString local_path;
    KIVString relative_path; // with slashes; empty if there is no way from the folder
    KIVString user_name;
};

/// References with tags, in the order of their addition.
class KIVFileReferenceList : public KIVObject {
    KIV_STORED(KIVFileReferenceList, KIVObject);

public:
    KIVFileReferenceList() = default;
    explicit KIVFileReferenceList(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void add(const KIVFileReference& reference, int tag);

    /// Where the targets are looked for; set by the file that has the list.
    void set_folder(const KIVString& path);

private:
    friend class KIVFileReferenceListIter;

    struct Entry {
        KIVFileReference reference;
        int tag;
    };

    std::vector<Entry> entries;
    KIVString folder;
    KIVString real_folder; // the same without symbolic links
};

/// `for (KIVFileReferenceListIter i(list); i.ok(); i.advance())`. A null list is empty.
class KIVFileReferenceListIter {
public:
    explicit KIVFileReferenceListIter(const KIVFileReferenceList* list) : list(list) {}

    bool ok() const { return list && index < list->entries.size(); }
    void advance() { ++index; }
    KIVFile inq_target() const
    {
        return list->entries[index].reference.inq_target(list->folder, list->real_folder);
    }
    int inq_tag() const { return list->entries[index].tag; }

private:
    const KIVFileReferenceList* list;
    std::size_t index = 0;
};
