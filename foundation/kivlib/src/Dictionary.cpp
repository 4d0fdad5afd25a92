#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/NameKeyDictionary.h"

KIV_STORED_CLASS(DictionaryBase, -1);
KIV_STORED_CLASS(Dictionary, -1);
KIV_STORED_CLASS(NameKeyDictionary, -1);

DictionaryBase::DictionaryBase(unsigned bucket_count) : buckets(std::max(bucket_count, 1U)) {}

DictionaryBase::DictionaryBase(KIVIStream& stream) : KIVObject(stream), buckets(128), owns(true) {}

DictionaryBase::~DictionaryBase()
{
    if (owns)
        delete_all();
    else
        clear();
}

/// Chains are taken apart one by one: their destructors would nest.
void DictionaryBase::clear()
{
    for (auto& head : buckets)
        while (head)
            head = std::move(head->next);
    size = 0;
}

unsigned long DictionaryBase::do_hash(unsigned long hash) const
{
    return hash % buckets.size();
}

void DictionaryBase::delete_all()
{
    for (auto& head : buckets)
        for (const Assoc* assoc = head.get(); assoc; assoc = assoc->next.get()) {
            delete assoc->value;
            delete assoc->key;
        }
    clear();
}

void DictionaryBase::add_assoc(unsigned long hash, KIVObject* key, KIVObject* value)
{
    if (static_cast<std::size_t>(size) >= 2 * buckets.size())
        grow();
    auto* place = &buckets[do_hash(hash)];
    while (*place) // an older pair of the same key goes first
        place = &(*place)->next;
    *place = std::make_unique<Assoc>(Assoc{hash, key, value, nullptr});
    ++size;
}

void DictionaryBase::grow()
{
    auto old = std::exchange(buckets, std::vector<std::unique_ptr<Assoc>>(4 * buckets.size()));
    size = 0;
    for (auto& head : old)
        while (head) {
            add_assoc(head->hash, head->key, head->value);
            head = std::move(head->next);
        }
}

bool DictionaryBase::take_out(std::unique_ptr<Assoc>& place)
{
    if (!place)
        return false;
    place = std::move(place->next);
    --size;
    return true;
}

std::vector<const DictionaryBase::Assoc*> DictionaryBase::inq_sorted() const
{
    std::vector<const Assoc*> sorted;
    for (const auto& head : buckets)
        for (const Assoc* assoc = head.get(); assoc; assoc = assoc->next.get())
            sorted.push_back(assoc);
    std::ranges::stable_sort(sorted, {}, &Assoc::hash);
    return sorted;
}

namespace {
/// An object that is there, and not only announced: a key is asked for its hash.
std::unique_ptr<KIVObject> read_claimed(KIVIStream& stream)
{
    KIVObject* object = stream.read_object(nullptr);
    return std::unique_ptr<KIVObject>(object && stream.claim(object) ? object : nullptr);
}
} // namespace

Dictionary::Dictionary(KIVIStream& stream) : DictionaryBase(stream)
{
    for (int left = stream.read_count(2 * sizeof(short)); left > 0; --left) {
        std::unique_ptr<KIVObject> key = read_claimed(stream);
        std::unique_ptr<KIVObject> value = read_claimed(stream);
        if (key && value) {
            add(*key.release(), *value.release());
        } else {
            stream.forget(key.get());
            stream.forget(value.get());
        }
    }
}

void Dictionary::storer(KIVOStream& stream)
{
    DictionaryBase::storer(stream);
    stream << count();
    for (const Assoc* assoc : inq_sorted()) {
        stream.insert_with_class_hdr(assoc->key);
        stream.insert_with_class_hdr(assoc->value);
    }
}

bool Dictionary::lookup_assoc(KIVObject* key, KIVObject** value) const
{
    const unsigned long hash = key->hash();
    const Assoc* assoc = buckets[do_hash(hash)].get();
    while (assoc && !(assoc->hash == hash && assoc->key->is_same_as(key)))
        assoc = assoc->next.get();
    if (assoc)
        *value = assoc->value;
    return assoc != nullptr;
}

NameKeyDictionary::NameKeyDictionary(KIVIStream& stream) : DictionaryBase(stream)
{
    for (int left = stream.read_count(sizeof(long) + sizeof(short)); left > 0; --left) {
        unsigned long key = 0;
        stream >> key;
        if (std::unique_ptr<KIVObject> value = read_claimed(stream))
            add(key, *value.release());
    }
}

void NameKeyDictionary::storer(KIVOStream& stream)
{
    DictionaryBase::storer(stream);
    stream << count();
    for (const Assoc* assoc : inq_sorted()) {
        stream << assoc->hash;
        stream.insert_with_class_hdr(assoc->value);
    }
}

bool NameKeyDictionary::lookup_assoc(unsigned long key, KIVObject** value) const
{
    const Assoc* assoc = buckets[do_hash(key)].get();
    while (assoc && assoc->hash != key)
        assoc = assoc->next.get();
    if (assoc)
        *value = assoc->value;
    return assoc != nullptr;
}

bool NameKeyDictionary::remove(unsigned long key)
{
    auto* place = &buckets[do_hash(key)];
    while (*place && (*place)->hash != key)
        place = &(*place)->next;
    return take_out(*place);
}

DictionaryIterator::DictionaryIterator(DictionaryBase* dictionary) : dictionary(dictionary)
{
    next = &dictionary->buckets[0];
    skip_empty_buckets();
}

void DictionaryIterator::skip_empty_buckets()
{
    while (!*next && ++bucket < dictionary->buckets.size())
        next = &dictionary->buckets[bucket];
}

bool DictionaryIterator::advance()
{
    current = *next ? next : nullptr;
    if (!current)
        return false;
    next = &(*current)->next;
    skip_empty_buckets();
    return true;
}

KIVObject* DictionaryIterator::remove()
{
    if (!current)
        return nullptr;
    KIVObject* value = (*current)->value;
    const bool is_next_behind = next == &(*current)->next;
    dictionary->take_out(*current);
    if (is_next_behind)
        next = current;
    current = nullptr;
    return value;
}
