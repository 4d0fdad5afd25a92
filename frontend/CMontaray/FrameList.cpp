#include "frontend/CMontaray/FrameList.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

namespace {
/// Takes a number above 0 from the front of the text. False if there is none.
bool take_number(std::string_view& text, int& number)
{
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || number <= 0)
        return false;
    text = {read.ptr, static_cast<std::size_t>(end - read.ptr)};
    return true;
}

bool take_sign(std::string_view& text, char sign)
{
    const bool is_there = text.starts_with(sign);
    if (is_there)
        text.remove_prefix(1);
    return is_there;
}
} // namespace

std::optional<FrameList::Range> FrameList::parse_range(std::string_view text)
{
    Range range{0, 0, 1};
    if (!take_number(text, range.first))
        return std::nullopt;
    range.last = range.first;
    if (take_sign(text, '-')) {
        if (!take_number(text, range.last) || range.last < range.first)
            return std::nullopt;
        if (take_sign(text, 'x') && !take_number(text, range.step))
            return std::nullopt;
    }
    return text.empty() ? std::optional(range) : std::nullopt;
}

std::optional<FrameList> FrameList::parse(std::string_view text)
{
    FrameList list;
    for (std::size_t comma = 0; comma != std::string_view::npos;) {
        comma = text.find(',');
        const std::optional<Range> range = parse_range(text.substr(0, comma));
        if (!range)
            return std::nullopt;
        list.ranges.push_back(*range);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return list;
}

int FrameList::inq_last() const
{
    int last = 0;
    for (const Range& range : ranges)
        last = std::max(last, range.last - (range.last - range.first) % range.step);
    return last;
}

std::vector<int> FrameList::list_frames(int last) const
{
    std::vector<int> frames;
    std::unordered_set<int> listed;
    for (const Range& range : ranges)
        for (long frame = range.first; frame <= std::min(range.last, last); frame += range.step)
            if (listed.insert(static_cast<int>(frame)).second)
                frames.push_back(static_cast<int>(frame));
    return frames;
}
