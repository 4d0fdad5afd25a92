#pragma once

class NumericKeyCell;
class NumericSubColumn;

#include "curveslib/hdr/Fairing.h"
#include "xsheet/column/hdr/ReadTable.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

/// The keys of a numeric sub-column side by side, so that reading a value touches few places in
/// memory however many keys and columns there are. It tells only what plain keys say.
class NumericSpans : public ReadTable {
public:
    /// Nothing if there is no such element, or the value has to be worked out from cells.
    [[gnu::always_inline]] std::optional<double> read(int element, int frame)
    {
        if (static_cast<unsigned>(element) >= order || is_half != Fairing::inq_half_frame() ||
            !find(frame))
            return {};
        return read(spans[static_cast<unsigned>(element) * key_count + at], frame - starts[at]);
    }

    /// A value was worked out from cells: if that has happened often enough, the keys are taken.
    void note_read(NumericSubColumn& column);

private:
    enum class Kind : unsigned char { FROM_CELLS, HELD, RAMP, EASED };

    /// The heights of an easing by offset, each worked out when it is asked for.
    struct Easing {
        double inq_height(int offset);

        NumericKeyCell* key;         // not owned
        std::vector<double> heights; // NaN where not asked for yet
    };

    /// One element of a key and of the frames behind it. Two of them fill a line of the cache.
    struct alignas(32) Span {
        double from = 0.0;
        double to = 0.0;
        int reach = 0;  // frames behind the key that it fills
        int frames = 1; // to the next key, as the easing has it
        int rate = 1;   // frames per step of a ramp, or the index of an easing
        Kind kind = Kind::FROM_CELLS;
    };

    [[gnu::always_inline]] std::optional<double> read(const Span& span, int offset) const
    {
        if (offset > span.reach || span.kind == Kind::FROM_CELLS)
            return {};
        if (span.kind == Kind::HELD || (offset == 0 && !is_half))
            return span.from;
        const double factor = span.kind == Kind::RAMP
                                  ? inq_ramp_height(span, offset)
                                  : easings[static_cast<unsigned>(span.rate)]->inq_height(offset);
        return (1.0 - factor) * span.from + factor * span.to;
    }

    double inq_ramp_height(const Span& span, int offset) const
    {
        const int step = span.rate > 1 ? offset - offset % span.rate : offset;
        const double time = step + (is_half ? 0.5 : 0.0);
        return std::clamp(time / span.frames, 0.0, 1.0);
    }

    /// Makes the key at or before the frame the current one.
    bool find(int frame)
    {
        return (starts[at] <= frame && frame < starts[at + 1]) || search(frame);
    }

    bool search(int frame);
    bool take(NumericSubColumn& column);
    bool take_starts(NumericSubColumn& column);
    void take_first_element(NumericSubColumn& column);
    void take_further_element(NumericSubColumn& column, int element);
    Span make_span(NumericKeyCell& key);
    void lead_on(Span& span, NumericKeyCell& key);

    // What a read looks at stands in one line of the cache.
    unsigned order = 0;
    unsigned key_count = 0;
    std::size_t at = 0;                           // the key read last
    std::unique_ptr<Span[]> spans;                // of the first element, then of the second ...
    std::unique_ptr<int[]> starts;                // frames of the keys, and one behind all
    bool is_half = false;                         // frames are read half a frame late
    std::vector<std::unique_ptr<Easing>> easings; // each of one key
    unsigned long read_at = 0;                    // the change count of the reads counted
    int reads = 0;
};
