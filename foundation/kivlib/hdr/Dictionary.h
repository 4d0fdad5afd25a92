#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Pairs of a hash and two objects, in buckets that grow with the count. Refers to its objects,
/// unless it came from a stream: then it owns those that it holds.
class DictionaryBase : public KIVObject {
    KIV_STORED_ABSTRACT(DictionaryBase, KIVObject);

public:
    struct Assoc {
        unsigned long hash = 0;
        KIVObject* key = nullptr; // null in a dictionary by number
        KIVObject* value = nullptr;
        std::unique_ptr<Assoc> next;
    };

    explicit DictionaryBase(unsigned bucket_count);
    explicit DictionaryBase(KIVIStream& stream);
    ~DictionaryBase() override;

    /// The bucket of a hash.
    unsigned long do_hash(unsigned long hash) const;

    /// Deletes all values, and the keys that are objects.
    void delete_all();
    int count() const { return size; }

protected:
    void add_assoc(unsigned long hash, KIVObject* key, KIVObject* value);

    /// False if nothing stands there.
    bool take_out(std::unique_ptr<Assoc>& place);

    /// In the order of their arrival, as far as the hashes differ: for storing.
    std::vector<const Assoc*> inq_sorted() const;

    std::vector<std::unique_ptr<Assoc>> buckets;

private:
    friend class DictionaryIterator;

    void grow();
    void clear();

    int size = 0;
    bool owns = false;
};

/// Objects by object: two keys are the same if `is_same_as` says so.
class Dictionary : public DictionaryBase {
    KIV_STORED(Dictionary, DictionaryBase);

public:
    explicit Dictionary(unsigned bucket_count) : DictionaryBase(bucket_count) {}

    /// Claims what it reads.
    explicit Dictionary(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void add(KIVObject& key, KIVObject& value) { add_assoc(key.hash(), &key, &value); }

    /// True if the key is there; then its value is given.
    bool lookup_assoc(KIVObject* key, KIVObject** value) const;
};

/// A walk over a dictionary. The current pair may be taken out.
class DictionaryIterator {
public:
    explicit DictionaryIterator(DictionaryBase* dictionary);

    /// To the next pair, at first to the first. False at the end.
    bool advance();
    const DictionaryBase::Assoc* get_assoc() const { return current ? current->get() : nullptr; }

    /// Takes out the current pair and gives its value; the next `advance` goes on behind it.
    KIVObject* remove();

private:
    void skip_empty_buckets();

    DictionaryBase* dictionary;
    std::size_t bucket = 0;
    std::unique_ptr<DictionaryBase::Assoc>* current = nullptr;
    std::unique_ptr<DictionaryBase::Assoc>* next = nullptr;
};
