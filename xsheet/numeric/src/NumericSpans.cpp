#include "xsheet/numeric/src/NumericSpans.h"

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <cmath>
#include <limits>

namespace {
constexpr int KEYS_PER_READ = 4; // that may be taken for each value that was worked out from cells
constexpr int BEHIND_ALL = std::numeric_limits<int>::max();
constexpr double NOT_KNOWN = std::numeric_limits<double>::quiet_NaN();
} // namespace

// Without jumps: which half is next, nobody could guess.
bool NumericSpans::search(int frame)
{
    if (frame < starts.front())
        return false;
    const int* first = starts.data();
    for (std::size_t left = key_count; left > 1;) {
        const std::size_t half = left / 2;
        first += first[half] <= frame ? half : 0;
        left -= half;
    }
    at = static_cast<std::size_t>(first - starts.data());
    return true;
}

double NumericSpans::Easing::inq_height(int offset)
{
    double& height = heights[static_cast<std::size_t>(offset)];
    if (std::isnan(height))
        height = key->inq_ifactor(offset);
    return height;
}

void NumericSpans::note_read(NumericSubColumn& column)
{
    const unsigned long change = column.inq_key_cell_list()->inq_change_count();
    if (std::exchange(read_at, change) != change)
        reads = 0;
    if (++reads > column.inq_key_cell_list()->count() / KEYS_PER_READ && take(column))
        made_at = change;
}

/// False if there is nothing that could be told from a table.
bool NumericSpans::take(NumericSubColumn& column)
{
    order = static_cast<unsigned>(column.inq_order());
    spans.clear();
    easings.clear();
    at = 0;
    if (!take_starts(column))
        return false;
    for (int i = 0; i < column.inq_order(); ++i)
        take_element(column, i);
    return order > 0;
}

// Which of two keys on one frame counts, only their list can tell.
bool NumericSpans::take_starts(NumericSubColumn& column)
{
    starts.clear();
    for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key())
        starts.push_back(key->inq_number());
    key_count = starts.size();
    starts.push_back(BEHIND_ALL);
    return key_count > 0 &&
           std::ranges::adjacent_find(starts, std::greater_equal()) == starts.end();
}

void NumericSpans::take_element(NumericSubColumn& column, int element)
{
    spans.reserve(key_count * order);
    for (KeyCell* key = column.inq_first_key(); key; key = key->inq_next_key())
        spans.push_back(make_span(static_cast<NumericKeyCell&>(*key), element));
}

NumericSpans::Span NumericSpans::make_span(NumericKeyCell& key, int element)
{
    Span span;
    if (!key.is_plain())
        return span;
    span.from = key.inq_own_element(element);
    span.reach = key.inq_interp_len();
    if (key.inq_mode() != IM_INBETWEEN)
        span.kind = Kind::HELD;
    else if (key.goes_straight())
        lead_on(span, key, element);
    return span;
}

/// Fills in how a key goes on to the next one.
void NumericSpans::lead_on(Span& span, NumericKeyCell& key, int element)
{
    const Fairing* fairing = key.inq_fairing();
    span.to = static_cast<NumericKeyCell*>(key.inq_next_key())->inq_own_element(element);
    if (fairing && fairing->inq_control_point_count() == 0 && fairing->number_between >= 0) {
        span.kind = Kind::RAMP;
        span.frames = 1 + fairing->number_between;
        span.rate = fairing->inq_sample_rate();
        return;
    }
    span.kind = Kind::EASED;
    span.rate = static_cast<int>(easings.size());
    const auto count = static_cast<std::size_t>(std::max(span.reach, 0)) + 1;
    easings.push_back(std::make_unique<Easing>(Easing{&key, std::vector(count, NOT_KNOWN)}));
}
