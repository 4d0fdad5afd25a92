#pragma once

#include "kivlib/hdr/Dictionary.h"

/// Objects by number, such as assets by tag.
class NameKeyDictionary : public DictionaryBase {
    KIV_STORED(NameKeyDictionary, DictionaryBase);

public:
    explicit NameKeyDictionary(unsigned bucket_count) : DictionaryBase(bucket_count) {}

    /// Claims what it reads.
    explicit NameKeyDictionary(KIVIStream& stream);

    /// In ascending order of the numbers.
    void storer(KIVOStream& stream) override;

    void add(unsigned long key, KIVObject& value) { add_assoc(key, nullptr, &value); }

    /// True if the key is there; then its value is given.
    bool lookup_assoc(unsigned long key, KIVObject** value) const;

    /// False if it was not there.
    bool remove(unsigned long key);
};
