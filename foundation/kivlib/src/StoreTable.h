#pragma once

#include "kivlib/hdr/KIVObject.h"

#include <cstdint>
#include <unordered_map>

/// The objects of one writing stream by number. The number is kept in the object itself, unless
/// another stream that is still open has marked it.
class StoreTable {
public:
    static constexpr std::uint32_t NONE = UINT32_MAX;

    StoreTable();
    ~StoreTable();
    StoreTable(const StoreTable&) = delete;
    StoreTable& operator=(const StoreTable&) = delete;

    /// NONE for an object that was not added.
    std::uint32_t find(const KIVObject* object) const
    {
        return object->stream_epoch == epoch ? object->stream_number : find_elsewhere(object);
    }
    std::uint32_t add(const KIVObject* object)
    {
        if (is_marked_by_other(object)) {
            marked_by_others[object] = count;
        } else {
            object->stream_epoch = epoch;
            object->stream_number = count;
        }
        return count++;
    }

    /// Tells this table from all others of the process.
    std::uint32_t inq_epoch() const { return epoch; }

    /// A number for a record that has no object.
    void skip() { ++count; }

private:
    std::uint32_t find_elsewhere(const KIVObject* object) const;
    bool is_marked_by_other(const KIVObject* object) const;

    std::uint32_t epoch;
    std::uint32_t count = 0;
    std::unordered_map<const KIVObject*, std::uint32_t> marked_by_others;
};
