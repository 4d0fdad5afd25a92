#include "kivlib/hdr/KIVDefaultUnitHandler.h"

#include "kivlib/hdr/units.h"

#include <charconv>

namespace {
constexpr int MOST_PLACES = 17;
constexpr auto NO_TYPE = static_cast<KIVUnitType>(-1);
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct UnitSign {
    KIVUnitType type;
    const char* sign;
};
constexpr UnitSign SIGNS[] = {
    {KIV_UNIT_CENTIMETRES, "cm"}, {KIV_UNIT_MILLIMETRES, "mm"}, {KIV_UNIT_INCHES, "in"},
    {KIV_UNIT_INCHES, "\""},      {KIV_UNIT_PIXELS, "px"},      {KIV_UNIT_PERCENT, "%"},
    {KIV_UNIT_DEGREES, "°"},      {KIV_UNIT_DEGREES, "deg"},    {KIV_UNIT_FRAMES, "fr"},
    {KIV_UNIT_FIELDS, "fld"},
};

/// Fields and plain numbers are shown without a sign.
const char* find_shown_sign(KIVUnitType type)
{
    if (type == KIV_UNIT_FIELDS)
        return "";
    const auto* found = std::ranges::find(SIGNS, type, &UnitSign::type);
    return found == std::end(SIGNS) ? "" : found->sign;
}

std::string_view trim(std::string_view text)
{
    constexpr std::string_view BLANKS = " \t\n";
    const std::size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

std::string in_small_letters(std::string_view text)
{
    std::string small(text);
    for (char& c : small)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return small;
}

/// Gives what stands behind the number. Without one at the front `number` is none.
std::string_view read_number(std::string_view text, double* number)
{
    const bool has_plus = text.starts_with('+') && !text.starts_with("+-");
    const char* first = text.data() + (has_plus ? 1 : 0);
    const char* end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(first, end, *number);
    if (error != std::errc())
        *number = NO_NUMBER;
    return {behind, end};
}

/// In decimal places, whatever the language of the program; zero has no sign.
KIVString digits_of(double value, int places)
{
    char digits[400];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value,
                                            std::chars_format::fixed, places);
    std::string_view text(digits, end);
    if (text.starts_with('-') && text.find_first_not_of("-0.") == std::string_view::npos)
        text.remove_prefix(1);
    return std::string(text);
}

bool is_length(KIVUnitType type)
{
    return type != KIV_UNIT_PERCENT && type != KIV_UNIT_DEGREES && type != KIV_UNIT_FRAMES;
}

/// The unit of a sign that can stand where `expected` is asked for.
KIVUnitType find_type(std::string_view sign, KIVUnitType expected)
{
    const auto* found = std::ranges::find_if(SIGNS, [&](auto& s) { return sign == s.sign; });
    if (found == std::end(SIGNS))
        return NO_TYPE;
    const bool fits = found->type == expected || (is_length(found->type) && is_length(expected));
    return fits ? found->type : NO_TYPE;
}
} // namespace

KIVDefaultUnitHandler::Scale KIVDefaultUnitHandler::inq_scale(KIVUnitType type, Axis axis) const
{
    switch (type) {
    case KIV_UNIT_FIELDS:
        return {UNITS_PER_INCH, axis == Axis::X ? 1.0 : aspect_ratio};
    case KIV_UNIT_FIELD_WIDTH:
    case KIV_UNIT_INCHES:
        return {UNITS_PER_INCH, 1.0};
    case KIV_UNIT_CENTIMETRES:
        return {UNITS_PER_INCH, CENTIMETRES_PER_INCH};
    case KIV_UNIT_MILLIMETRES:
        return {UNITS_PER_INCH, 10.0 * CENTIMETRES_PER_INCH};
    case KIV_UNIT_PERCENT:
        return {1.0, 100.0};
    default:
        return {1.0, 1.0};
    }
}

KIVString KIVDefaultUnitHandler::to_units(double value, KIVUnitType shown, Axis axis) const
{
    const Scale scale = inq_scale(shown, axis);
    const int places = shown == KIV_UNIT_FRAMES ? 0 : std::clamp(precision, 0, MOST_PLACES);
    return digits_of(value / scale.values * scale.units, places) + find_shown_sign(shown);
}

bool KIVDefaultUnitHandler::to_internal(const KIVString& text, double* value, KIVUnitType expected,
                                        Axis axis) const
{
    const std::string typed = in_small_letters(trim(text.str()));
    double number = 0.0;
    const std::string_view sign = trim(read_number(typed, &number));
    const KIVUnitType type = sign.empty() ? expected : find_type(sign, expected);
    const Scale scale = inq_scale(type, axis);
    const double internal = number * scale.values / scale.units;
    const bool is_whole = number == std::floor(number);
    const bool is_unknown = !sign.empty() && type == NO_TYPE;
    if (is_unknown || !std::isfinite(internal) || (type == KIV_UNIT_FRAMES && !is_whole))
        return false;
    *value = internal;
    return true;
}

KIVString KIVDefaultUnitHandler::x_to_units(double value, bool is_angle) const
{
    return to_units(value, is_angle ? KIV_UNIT_DEGREES : unit, Axis::X);
}

KIVString KIVDefaultUnitHandler::y_to_units(double value, bool is_angle) const
{
    return to_units(value, is_angle ? KIV_UNIT_DEGREES : unit, Axis::Y);
}

bool KIVDefaultUnitHandler::x_to_internal(const KIVString& text, double* value, bool is_angle) const
{
    return to_internal(text, value, is_angle ? KIV_UNIT_DEGREES : unit, Axis::X);
}

bool KIVDefaultUnitHandler::y_to_internal(const KIVString& text, double* value, bool is_angle) const
{
    return to_internal(text, value, is_angle ? KIV_UNIT_DEGREES : unit, Axis::Y);
}

KIVDefaultUnitHandler* inq_default_unit_handler()
{
    static KIVDefaultUnitHandler handler;
    return &handler;
}
