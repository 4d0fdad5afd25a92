#pragma once

#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/KIVObject.h"
#include "kivlib/hdr/ObjectBlocks.h"

#include <cstdint>
#include <memory>
#include <new>
#include <unordered_set>
#include <vector>

/// The objects of one reading stream by number: their class, and whether somebody owns them.
class LoadTable {
public:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    LoadTable() : epoch(next_epoch()) {}
    LoadTable(const LoadTable&) = delete;
    LoadTable& operator=(const LoadTable&) = delete;
    ~LoadTable();

    struct Entry {
        KIVObject* object;
        std::uint16_t class_index; // in the stream
        bool is_owned;
        bool is_awaited; // announced: `object` is memory only
        bool is_open;    // its record is being read, so nothing in it may own it
    };

    std::uint32_t size() const
    {
        return static_cast<std::uint32_t>(entries.size() / sizeof(Entry));
    }

    /// Valid until the next is added.
    Entry* find(std::uint32_t number) { return number < size() ? &at(number) : nullptr; }

    /// Null also for an announced object that is not there yet.
    Entry* find(const KIVObject* object)
    {
        if (!object || (!awaited.empty() && awaited.contains(object))) // no number stands there yet
            return nullptr;
        return object->stream_epoch == epoch ? find(object->stream_number) : nullptr;
    }

    /// The number of a new entry, which has no object yet; NONE without memory.
    std::uint32_t add(std::uint16_t class_index) { return add({nullptr, class_index, {}, {}, {}}); }

    /// The number of an announced object of `size` bytes, with memory for it. False without
    /// memory.
    bool add_awaited(std::uint16_t class_index, std::size_t size, KIVObject*& place);
    std::size_t inq_awaited_count() const { return awaited.size(); }

    /// The record of this number's object begins: the object read next is the one, until `enter`
    /// takes it.
    void begin_record(std::uint32_t number)
    {
        at(number).is_open = true;
        pending = number;
    }
    void end_record(std::uint32_t number) { at(number).is_open = false; }

    void enter(KIVObject* object)
    {
        if (pending == NONE)
            return;
        at(pending).object = object;
        if (object) {
            object->stream_epoch = epoch;
            object->stream_number = pending;
        }
        pending = NONE;
    }

    /// Memory for the object that is expected, or null.
    void* storage(std::size_t size)
    {
        return pending != NONE && at(pending).is_awaited ? take_awaited() : blocks.allocate(size);
    }

    /// Nothing came to be in memory that `storage` gave.
    void forget_storage(const void* memory);

    void set_owned(Entry& entry)
    {
        entry.is_owned = true;
        ++owned_count;
    }

    /// The objects that are there and have no owner; they have one now.
    std::vector<std::unique_ptr<KIVObject>> claim_rest();

    /// What was read up to now is in the caller's hands.
    void keep() { kept = size(); }

    /// A stream that failed deletes what nobody claimed or holds.
    void set_delete_unowned() { delete_unowned = true; }

    static std::uint32_t next_epoch();

private:
    Entry& at(std::uint32_t number) { return reinterpret_cast<Entry*>(entries.data())[number]; }
    std::uint32_t add(const Entry& entry)
    {
        const std::uint32_t number = size();
        void* place = entries.extend(sizeof entry);
        return place ? (new (place) Entry(entry), number) : NONE;
    }
    void* take_awaited();

    ByteBuffer entries; // of Entry
    ObjectBlocks blocks;
    std::uint32_t epoch;
    std::uint32_t pending = NONE;
    std::uint32_t kept = 0;                  // entries that are not deleted
    std::uint32_t owned_count = 0;           // entries with an owner
    std::unordered_set<const void*> awaited; // memory of announced objects
    bool delete_unowned = false;
};
