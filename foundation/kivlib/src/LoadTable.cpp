#include "kivlib/src/LoadTable.h"

LoadTable::~LoadTable()
{
    for (std::size_t i = kept; i < entries.size(); ++i) {
        const Entry& entry = entries[i];
        if (entry.is_awaited)
            ::operator delete(static_cast<void*>(entry.object));
        else if (delete_unowned && !entry.is_owned)
            delete entry.object;
    }
}

std::uint32_t LoadTable::next_epoch()
{
    static std::uint32_t epoch = 0;
    return ++epoch;
}

LoadTable::Entry* LoadTable::find(std::uint32_t number)
{
    return number < entries.size() ? &entries[number] : nullptr;
}

LoadTable::Entry* LoadTable::find(const KIVObject* object)
{
    if (!object || awaited.contains(object)) // no number stands there yet
        return nullptr;
    return object->stream_epoch == epoch ? find(object->stream_number) : nullptr;
}

std::uint32_t LoadTable::add(const ClassDescriptor* descriptor)
{
    entries.push_back({nullptr, descriptor});
    return size() - 1;
}

bool LoadTable::add_awaited(const ClassDescriptor* descriptor, KIVObject*& place)
{
    void* memory = ::operator new(descriptor->inq_stored_type()->size, std::nothrow);
    if (!memory)
        return false;
    place = static_cast<KIVObject*>(memory);
    entries.push_back({place, descriptor, false, true});
    awaited.insert(memory);
    return true;
}

void LoadTable::enter(KIVObject* object)
{
    if (pending == NONE)
        return;
    Entry& entry = entries[pending];
    entry.object = object;
    if (object) {
        object->stream_epoch = epoch;
        object->stream_number = pending;
    }
    pending = NONE;
}

void* LoadTable::storage(std::size_t size)
{
    if (pending != NONE && entries[pending].is_awaited) {
        entries[pending].is_awaited = false;
        awaited.erase(entries[pending].object);
        return entries[pending].object;
    }
    return ::operator new(size, std::nothrow);
}
