#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <cstddef>
#include <vector>

/// A set of whole numbers, such as frames, kept as ascending ranges that do not touch.
class SlotList : public KIVObject {
    KIV_STORED(SlotList, KIVObject);

public:
    /// From `first` to `last`, both inclusive.
    struct Range {
        int first;
        int last;
        bool operator==(const Range&) const = default;
    };

    SlotList() = default;
    explicit SlotList(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void add_slot(int slot) { add_range(slot, slot); }
    void remove_slot(int slot) { remove_range(slot, slot); }

    /// A range that is in the set already costs a search and no more.
    void add_range(int first, int last);
    void remove_range(int first, int last);
    bool contains_slot(int slot) const;
    void merge(const SlotList& other);

    bool inq_is_empty() const { return ranges.empty(); }
    const std::vector<Range>& inq_ranges() const { return ranges; }

private:
    std::vector<Range> ranges;
};

/// A walk over the numbers of a set: `while (iterator++) use(iterator())`.
class SlotIterator {
public:
    explicit SlotIterator(const SlotList* list) : ranges(list->inq_ranges()) {}

    /// To the next number, at first to the lowest. False at the end.
    bool operator++(int);

    /// To the number before, at first to the highest. False at the end.
    bool operator--(int);

    /// To the next range, at first to the first. False at the end.
    bool range_inc();

    int operator()() const { return slot; }

    /// The range that holds the current number.
    const SlotList::Range& inq_range() const { return ranges[range]; }

private:
    bool go_to_range(std::size_t to);

    const std::vector<SlotList::Range>& ranges;
    std::size_t range = 0;
    int slot = 0;
    bool has_started = false;
};
