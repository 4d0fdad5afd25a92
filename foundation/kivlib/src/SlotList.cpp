#include "kivlib/hdr/SlotList.h"

#include "kivlib/hdr/KIVOStream.h"

KIV_STORED_CLASS(SlotList, -1);

SlotList::SlotList(KIVIStream& stream) : KIVObject(stream)
{
    for (int left = stream.read_count(2 * sizeof(int)); left > 0; --left) {
        int first = 0;
        int last = 0;
        stream >> first >> last;
        add_range(first, last);
    }
}

void SlotList::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << static_cast<int>(ranges.size());
    for (const Range& range : ranges)
        stream << range.first << range.last;
}

void SlotList::add_range(int first, int last)
{
    if (last < first)
        return;
    // Ranges that touch or overlap [first, last] melt into one. Sums are made in long: the ends
    // may be the ends of int.
    const auto begin = std::ranges::lower_bound(ranges, static_cast<long>(first) - 1, {},
                                                [](const Range& r) { return long{r.last}; });
    if (begin != ranges.end() && begin->first <= first && last <= begin->last)
        return;
    auto end = begin;
    while (end != ranges.end() && end->first <= static_cast<long>(last) + 1) {
        first = std::min(first, end->first);
        last = std::max(last, end->last);
        ++end;
    }
    if (begin == end) {
        ranges.insert(begin, {first, last});
        return;
    }
    *begin = {first, last};
    ranges.erase(begin + 1, end);
}

void SlotList::remove_range(int first, int last)
{
    if (last < first)
        return;
    const auto begin = std::ranges::lower_bound(ranges, first, {}, &Range::last);
    auto end = begin;
    while (end != ranges.end() && end->first <= last)
        ++end;
    if (begin == end)
        return;
    const int head = begin->first;
    const int tail = (end - 1)->last;
    auto place = ranges.erase(begin, end);
    if (tail > last)
        place = ranges.insert(place, {last + 1, tail});
    if (head < first)
        ranges.insert(place, {head, first - 1});
}

bool SlotList::contains_slot(int slot) const
{
    const auto range = std::ranges::lower_bound(ranges, slot, {}, &Range::last);
    return range != ranges.end() && range->first <= slot;
}

void SlotList::merge(const SlotList& other)
{
    const std::vector<Range> added = other.ranges; // `other` may be this list
    for (const Range& range : added)
        add_range(range.first, range.last);
}

bool SlotIterator::go_to_range(std::size_t to)
{
    has_started = true;
    range = to;
    return range < ranges.size();
}

bool SlotIterator::operator++(int)
{
    if (has_started && range < ranges.size() && slot < ranges[range].last) {
        ++slot;
        return true;
    }
    return range_inc();
}

bool SlotIterator::operator--(int)
{
    if (has_started && range < ranges.size() && slot > ranges[range].first) {
        --slot;
        return true;
    }
    if (!go_to_range(has_started ? range - 1 : ranges.size() - 1))
        return false;
    slot = ranges[range].last;
    return true;
}

bool SlotIterator::range_inc()
{
    if (!go_to_range(has_started ? range + 1 : 0))
        return false;
    slot = ranges[range].first;
    return true;
}
