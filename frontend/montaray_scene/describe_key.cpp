#include "frontend/montaray_scene/describe_key.h"

#include "curveslib/hdr/Fairing.h"
#include "frontend/montaray_scene/words.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/numeric/hdr/NumericCellData.h"

namespace {
constexpr int MOST_FRAMES_A_STEP = 1000;

void set_element(const Place& place, BaseNumericCellData& data, int i)
{
    data.set_element(i, place.number());
    if (data.inq_element(i) != place.number())
        place.refuse("a number that the column allows, such as " +
                     KIVString(data.inq_element(i)).str());
}

/// The two handles of a curve from (0, 0) to (1, 1): x and y of the first, x and y of the second.
using Ease = std::array<double, 4>;

Ease inq_ease(const Place& place)
{
    if (place.is_text())
        return EASES[static_cast<std::size_t>(place.one_of(EASE_WORDS))];
    const std::vector<Place> items = place.items();
    Ease ease{};
    if (items.size() != ease.size())
        place.refuse("a word or an array of 4 numbers");
    for (std::size_t i = 0; i < ease.size(); ++i) {
        ease[i] = items[i].number();
        if (i % 2 == 0 && (ease[i] < 0.0 || ease[i] > 1.0))
            items[i].refuse("a time from 0 to 1");
    }
    return ease;
}
} // namespace

std::vector<Place> inq_numbers(const Place& place, int count)
{
    if (count == 1 && !place.is_array())
        return {place};
    std::vector<Place> items = place.items();
    if (items.size() != static_cast<std::size_t>(count))
        place.refuse("an array of " + std::to_string(count) + " numbers");
    return items;
}

void set_values(const Place& place, int count, KeyCell& key)
{
    const std::vector<Place> numbers = inq_numbers(place, count);
    for (int i = 0; i < count; ++i)
        set_element(numbers[static_cast<std::size_t>(i)],
                    static_cast<BaseNumericCellData&>(*key.inq_data()), i);
}

Vector2 inq_point(const Place& place)
{
    const std::vector<Place> numbers = inq_numbers(place, 2);
    return {numbers[0].number(), numbers[1].number()};
}

void set_ease(const Place& place, KeyCell& key)
{
    const KeyCell* next = key.inq_next_key();
    if (!next)
        place.refuse("an easing only where another key follows");
    const Ease ease = inq_ease(place);
    auto fairing = std::make_unique<Fairing>(next->inq_number() - key.inq_number() - 1);
    fairing->set_sample_rate(key.inq_sample_rate());
    fairing->create_empty_cps(2);
    *fairing->inq_control_point(0) = {{0.0, 0.0}, {}, {ease[0], ease[1]}};
    *fairing->inq_control_point(1) = {{1.0, 1.0}, {ease[2] - 1.0, ease[3] - 1.0}, {}};
    key.set_fairing(fairing.release());
}

void set_interpolation(const Place& place, KeyCell& key, InterpMode mode)
{
    if (const auto chosen = place.find("mode")) {
        mode = static_cast<InterpMode>(chosen->one_of(MODE_WORDS));
        if (!key.can_set_mode(mode))
            chosen->refuse("a mode that the column allows");
    }
    key.set_mode(mode);
    if (const auto step = place.find("step"))
        key.set_sample_rate(step->whole(1, MOST_FRAMES_A_STEP));
}
