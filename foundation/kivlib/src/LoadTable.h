#pragma once

#include "kivlib/hdr/ClassDescriptor.h"

#include <cstdint>
#include <new>
#include <unordered_set>
#include <vector>

/// The objects of one reading stream by number: their class, and whether somebody owns them.
class LoadTable {
public:
    LoadTable() : epoch(next_epoch()) {}
    LoadTable(const LoadTable&) = delete;
    LoadTable& operator=(const LoadTable&) = delete;
    ~LoadTable();

    struct Entry {
        KIVObject* object = nullptr;
        const ClassDescriptor* descriptor = nullptr;
        bool is_owned = false;
        bool is_awaited = false; // announced: `object` is memory only
        bool is_open = false;    // its record is being read, so nothing in it may own it
    };

    std::uint32_t size() const { return static_cast<std::uint32_t>(entries.size()); }
    Entry* find(std::uint32_t number);

    /// Null also for an announced object that is not there yet.
    Entry* find(const KIVObject* object);

    /// The number of a new entry, which has no object yet.
    std::uint32_t add(const ClassDescriptor* descriptor);

    /// The number of an announced object of a class with a stored type, with memory for it. False
    /// without memory.
    bool add_awaited(const ClassDescriptor* descriptor, KIVObject*& place);
    std::size_t inq_awaited_count() const { return awaited.size(); }

    /// The object being read next is this number's, until `enter` takes it.
    void expect(std::uint32_t number) { pending = number; }
    void enter(KIVObject* object);
    void set_open(std::uint32_t number, bool is_open) { entries[number].is_open = is_open; }

    /// Memory for the object that is expected, or null.
    void* storage(std::size_t size);

    /// What was read up to now is in the caller's hands.
    void keep() { kept = entries.size(); }

    /// A stream that failed deletes what nobody claimed or holds.
    void set_delete_unowned() { delete_unowned = true; }

    static std::uint32_t next_epoch();

private:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    std::vector<Entry> entries;
    std::uint32_t epoch;
    std::uint32_t pending = NONE;
    std::size_t kept = 0;                    // entries that are not deleted
    std::unordered_set<const void*> awaited; // memory of announced objects
    bool delete_unowned = false;
};
