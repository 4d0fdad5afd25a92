#pragma once

#include <optional>
#include <string_view>
#include <vector>

/// Frames as a user lists them: `1-10,20,30-60x2`, where x2 means every second one.
class FrameList {
public:
    /// None for a text that is no such list.
    static std::optional<FrameList> parse(std::string_view text);

    int inq_last() const;

    /// Each frame once, in the order of the list; those after `last` are left out.
    std::vector<int> list_frames(int last) const;

private:
    struct Range {
        int first, last, step;
    };
    static std::optional<Range> parse_range(std::string_view text);

    std::vector<Range> ranges;
};
