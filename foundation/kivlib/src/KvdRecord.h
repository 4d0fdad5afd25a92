#pragma once

#include "kivlib/hdr/KIVFileReference.h"

/// The references of a file, in lists by key.
class KvdRecord : public KIVObject {
    KIV_STORED(KvdRecord, KIVObject);

public:
    KvdRecord() = default;
    explicit KvdRecord(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    const KIVFileReferenceList* find(const KIVString& key) const;
    void set(const KIVString& key, const KIVFileReferenceList* list);
    void set_folder(const KIVString& folder);

private:
    struct Entry {
        KIVString key;
        KIVFileReferenceList list;
    };

    std::vector<Entry> entries;
};
