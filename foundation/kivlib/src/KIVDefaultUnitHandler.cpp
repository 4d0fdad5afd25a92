#include "kivlib/hdr/KIVDefaultUnitHandler.h"

#include <cstdio>
#include <cstdlib>

namespace {
constexpr double WORLD_UNITS_PER_INCH = 60.0;

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

bool is_length(KIVUnitType type)
{
    return type != KIV_UNIT_PERCENT && type != KIV_UNIT_DEGREES && type != KIV_UNIT_FRAMES;
}
} // namespace

double KIVDefaultUnitHandler::inq_world_units_per(KIVUnitType type, Axis axis) const
{
    switch (type) {
    case KIV_UNIT_FIELDS:
        return axis == Axis::X ? WORLD_UNITS_PER_INCH : WORLD_UNITS_PER_INCH / aspect_ratio;
    case KIV_UNIT_FIELD_WIDTH:
    case KIV_UNIT_INCHES:
        return WORLD_UNITS_PER_INCH;
    case KIV_UNIT_CENTIMETRES:
        return WORLD_UNITS_PER_INCH / 2.54;
    case KIV_UNIT_MILLIMETRES:
        return WORLD_UNITS_PER_INCH / 25.4;
    case KIV_UNIT_PERCENT:
        return 0.01;
    default:
        return 1.0;
    }
}

KIVString KIVDefaultUnitHandler::to_units(double value, KIVUnitType shown, Axis axis) const
{
    char digits[400];
    std::snprintf(digits, sizeof digits, "%.*f",
                  shown == KIV_UNIT_FRAMES ? 0 : std::clamp(precision, 0, 17),
                  value / inq_world_units_per(shown, axis));
    return KIVString(digits) + find_shown_sign(shown);
}

bool KIVDefaultUnitHandler::to_internal(const KIVString& text, double* value, KIVUnitType expected,
                                        Axis axis) const
{
    const std::string typed(trim(text));
    char* end = nullptr;
    const double number = std::strtod(typed.c_str(), &end);
    if (end == typed.c_str() || !std::isfinite(number))
        return false;
    const std::string_view sign = trim(end);
    KIVUnitType type = expected;
    if (!sign.empty()) {
        const auto* found = std::ranges::find_if(SIGNS, [&](auto& s) { return sign == s.sign; });
        if (found == std::end(SIGNS) ||
            (found->type != expected && !(is_length(found->type) && is_length(expected))))
            return false;
        type = found->type;
    }
    *value = number * inq_world_units_per(type, axis);
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
