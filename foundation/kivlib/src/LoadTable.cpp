#include "kivlib/src/LoadTable.h"

LoadTable::~LoadTable()
{
    for (std::uint32_t i = kept; i < size(); ++i) {
        const Entry entry = at(i);
        if (entry.is_awaited)
            ::operator delete(static_cast<void*>(entry.object));
        else if (delete_unowned && !entry.is_owned)
            delete entry.object;
    }
}

std::vector<std::unique_ptr<KIVObject>> LoadTable::claim_rest()
{
    std::vector<std::unique_ptr<KIVObject>> rest;
    for (std::uint32_t i = 0; i < size() && owned_count < size(); ++i)
        if (Entry& entry = at(i); !entry.is_owned) {
            set_owned(entry);
            if (entry.object)
                rest.emplace_back(entry.object);
        }
    return rest;
}

std::uint32_t LoadTable::next_epoch()
{
    static std::uint32_t epoch = 0;
    return ++epoch;
}

bool LoadTable::add_awaited(std::uint16_t class_index, std::size_t size, KIVObject*& place)
{
    void* memory = ::operator new(size, std::nothrow);
    if (!memory)
        return false;
    place = static_cast<KIVObject*>(memory);
    if (add({place, class_index, false, true, false}) == NONE) {
        ::operator delete(memory);
        place = nullptr;
        return false;
    }
    awaited.insert(memory);
    return true;
}

void* LoadTable::take_awaited()
{
    Entry& entry = at(pending);
    entry.is_awaited = false;
    awaited.erase(entry.object);
    return entry.object;
}

// Rare enough for a search: the object may have been left before it got its number.
void LoadTable::forget_storage(const void* memory)
{
    for (std::uint32_t i = size(); i-- > kept;)
        if (at(i).object == memory)
            at(i).object = nullptr;
}
