#include "xsheet/numeric/src/NumericSpans.h"

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <cmath>
#include <limits>

namespace {
constexpr int VALUES_PER_READ = 4; // of keys, taken for each value that was worked out from cells
constexpr std::size_t MOST_HEIGHTS = 16384; // kept of an easing
constexpr std::size_t MORE_HEIGHTS = 16;
constexpr int BEHIND_ALL = std::numeric_limits<int>::max();
constexpr double NOT_KNOWN = std::numeric_limits<double>::quiet_NaN();
} // namespace

// Without jumps: which half is next, nobody could guess.
bool NumericSpans::search(int frame)
{
    if (frame < starts[0])
        return false;
    const int* first = starts.get();
    for (unsigned left = key_count; left > 1;) {
        const unsigned half = left / 2;
        first += first[half] <= frame ? half : 0;
        left -= half;
    }
    at = static_cast<std::size_t>(first - starts.get());
    return true;
}

// The stretch that is kept grows with what is asked for, and not for ever.
double NumericSpans::Easing::inq_height(int offset)
{
    const auto index = static_cast<std::size_t>(offset);
    if (index >= MOST_HEIGHTS)
        return key->inq_ifactor(offset);
    if (index >= heights.size())
        heights.resize(std::max(index + MORE_HEIGHTS, 2 * heights.size()), NOT_KNOWN);
    if (std::isnan(heights[index]))
        heights[index] = key->inq_ifactor(offset);
    return heights[index];
}

void NumericSpans::note_read(NumericSubColumn& column)
{
    const BaseCellList& keys = *column.inq_key_cell_list();
    const unsigned long change = keys.inq_change_count();
    if (std::exchange(read_at, change) != change)
        reads = 0;
    const long limit = static_cast<long>(keys.count()) * column.inq_order() / VALUES_PER_READ;
    if (reads <= limit && ++reads > limit && take(column))
        made_at = change;
}

/// False if there is nothing that could be told from a table.
bool NumericSpans::take(NumericSubColumn& column)
{
    order = static_cast<unsigned>(column.inq_order());
    is_half = Fairing::inq_half_frame();
    key_count = static_cast<unsigned>(column.inq_key_cell_list()->count());
    at = 0;
    easings.clear();
    if (order == 0 || key_count == 0 || !take_starts(column))
        return false;
    spans = std::make_unique<Span[]>(std::size_t(key_count) * order);
    take_first_element(column);
    for (int i = 1; i < column.inq_order(); ++i)
        take_further_element(column, i);
    return true;
}

// Which of two keys on one frame counts, only their list can tell.
bool NumericSpans::take_starts(NumericSubColumn& column)
{
    starts = std::make_unique_for_overwrite<int[]>(key_count + 1);
    int* start = starts.get();
    for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key())
        *start++ = key->inq_number();
    *start = BEHIND_ALL;
    return std::adjacent_find(starts.get(), start + 1, std::greater_equal()) == start + 1;
}

void NumericSpans::take_first_element(NumericSubColumn& column)
{
    Span* span = spans.get();
    for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key())
        *span++ = make_span(static_cast<NumericKeyCell&>(*key));
}

/// As the first one, but for the values.
void NumericSpans::take_further_element(NumericSubColumn& column, int element)
{
    Span* span = spans.get() + static_cast<std::size_t>(element) * key_count;
    std::copy_n(spans.get(), key_count, span);
    auto* key = static_cast<NumericKeyCell*>(column.inq_first_key());
    for (; key; key = static_cast<NumericKeyCell*>(key->inq_next_key()), ++span) {
        if (span->kind != Kind::FROM_CELLS)
            span->from = key->inq_own_element(element);
        if (span->kind == Kind::RAMP || span->kind == Kind::EASED)
            span->to = static_cast<NumericKeyCell*>(key->inq_next_key())->inq_own_element(element);
    }
}

NumericSpans::Span NumericSpans::make_span(NumericKeyCell& key)
{
    Span span;
    if (!key.is_plain())
        return span;
    const InterpMode mode = key.inq_mode();
    const int length = key.inq_interp_len();
    span.from = key.inq_own_element(0);
    span.reach = mode == IM_STOP ? std::min(length, 0) : length; // behind a stop stands nothing
    if (mode != IM_INBETWEEN)
        span.kind = Kind::HELD;
    else if (key.goes_straight())
        lead_on(span, key);
    return span;
}

/// Fills in how a key goes on to the next one.
void NumericSpans::lead_on(Span& span, NumericKeyCell& key)
{
    const Fairing* fairing = key.inq_fairing();
    span.to = static_cast<NumericKeyCell*>(key.inq_next_key())->inq_own_element(0);
    if (fairing && fairing->inq_control_point_count() == 0 && fairing->number_between >= 0) {
        span.kind = Kind::RAMP;
        span.frames = 1 + fairing->number_between;
        span.rate = fairing->inq_sample_rate();
        return;
    }
    span.kind = Kind::EASED;
    span.rate = static_cast<int>(easings.size());
    easings.push_back(std::make_unique<Easing>(Easing{&key, {}}));
}
