#include "xsheet/colour/hdr/ColourSubColumn.h"

#include "imagelib/hdr/ColourManager.h"
#include "kivlib/hdr/KIVDefaults.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/colour/hdr/ColourKeyCell.h"
#include "xsheet/node/hdr/ColourSubColPrefs.h"

#include <cstdio>

KIV_STORED_CLASS(ColourSubColumn, 108);

namespace {
constexpr FormatVersions HAS_PROFILE = since(108);
constexpr FormatVersions HAS_THREE_ELEMENTS = since(122);
constexpr int ORDER = 3;
constexpr double DEFAULT_ELEMENT = 0.5;
constexpr double HIGHEST_ELEMENT = 255.0;

int inq_default_mode()
{
    const int setting =
        KIVDefaults::inq_default("ColorInterpolationSpace", ColourSubColumn::HSV_INTERP);
    const bool is_other =
        setting == ColourSubColumn::RGB_INTERP || setting == ColourSubColumn::CMY_INTERP;
    return is_other ? setting : static_cast<int>(ColourSubColumn::HSV_INTERP);
}

/// What is no number is shown as 0.
int shown_part(float part)
{
    constexpr float MOST_SHOWN = 1000000.0F;
    return std::isnan(part) ? 0 : static_cast<int>(std::clamp(part, -MOST_SHOWN, MOST_SHOWN));
}

KIVString format_parts(const char* format, const float* parts)
{
    char text[64];
    std::snprintf(text, sizeof text, format, shown_part(parts[0]), shown_part(parts[1]),
                  shown_part(parts[2]));
    return text;
}

/// The colour as people type it: hues to 360, saturations and brightnesses to 100, parts of the
/// other two spaces to 255. What is black in an ink is in all three.
KIVString describe(const KIVColour& colour, int mode)
{
    constexpr float DEGREES = 360.0F, BYTE = 255.0F, PERCENT = 100.0F;
    float parts[4] = {};
    const auto scale = [&](float first, float others) {
        const float factors[] = {first, others, others};
        for (int i = 0; i < 3; ++i)
            parts[i] = std::round(parts[i] * factors[i]);
    };
    switch (mode) {
    case ColourSubColumn::RGB_INTERP:
        colour.inq_rgb(&parts[0], &parts[1], &parts[2]);
        scale(BYTE, BYTE);
        return format_parts("R%d/G%d/B%d", parts);
    case ColourSubColumn::HSV_INTERP:
        colour.inq_hsb(&parts[0], &parts[1], &parts[2]);
        scale(DEGREES, PERCENT);
        return format_parts("H%d/S%d/V%d", parts);
    case ColourSubColumn::CMY_INTERP:
        colour.inq_cmyk(&parts[0], &parts[1], &parts[2], &parts[3]);
        std::ranges::for_each(std::span(parts).first(3), [&](float& ink) { ink += parts[3]; });
        scale(BYTE, BYTE);
        return format_parts("C%d/M%d/Y%d", parts);
    default:
        return {};
    }
}
} // namespace

ColourSubColumn::ColourSubColumn()
    : NumericSubColumn(ORDER), colour_interp_mode(inq_default_mode()),
      profile(inq_colour_manager()->inq_output_profile_path())
{
    set_minimum_values(Vector(ORDER, 0.0));
    set_maximum_values(Vector(ORDER, HIGHEST_ELEMENT));
    set_default_values(Vector(ORDER, DEFAULT_ELEMENT));
}

ColourSubColumn::ColourSubColumn(KIVIStream& stream) : NumericSubColumn(stream)
{
    if (!HAS_THREE_ELEMENTS.hold(stream.inq_version()))
        set_order(1);
    RecordReader reader(stream);
    record(reader);
}

template <class Record> void ColourSubColumn::record(Record& r)
{
    r.value(colour_interp_mode);
    r.embedded(profile, HAS_PROFILE);
}

void ColourSubColumn::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

gsl::owner<KeyCell*> ColourSubColumn::create_new_key_with_label(int new_label)
{
    return new ColourKeyCell(this, -1, static_cast<unsigned>(new_label));
}

KIVColour ColourSubColumn::inq_colour(int frame)
{
    BaseCell* cell = inq_cell(frame);
    if (const CellData* data = cell ? cell->inq_data() : nullptr)
        return colour_of(*static_cast<const BaseNumericCellData*>(data));
    return {inq_blank_value(0), inq_blank_value(1), inq_blank_value(2)};
}

void ColourSubColumn::set_colour_interp_mode(int mode)
{
    if (mode == colour_interp_mode)
        return;
    colour_interp_mode = mode;
    clear_all_inbetweens();
}

// The keys come in only here: while the column was read they may not have been whole.
bool ColourSubColumn::load_finished_with_abort()
{
    if (NumericSubColumn::load_finished_with_abort())
        return true;
    change_to_output_profile();
    return false;
}

// Without a transform the colours stay what they were, and so does the name of their profile. The
// id is kept, for the scene's other columns come from the same profile.
void ColourSubColumn::change_to_output_profile()
{
    ColourManager* manager = inq_colour_manager();
    if (profile.is_null() || profile == manager->inq_output_profile_path())
        return;
    const int id = manager->new_transform_id(profile);
    if (const ColourTransform* transform = manager->lock(id)) {
        transform_keys(*transform);
        profile = manager->inq_output_profile_path();
    }
    manager->unlock(id);
}

void ColourSubColumn::transform_keys(const ColourTransform& transform)
{
    for (KeyCell* key = inq_first_key(); key; key = key->inq_next_key()) {
        auto* data = static_cast<BaseNumericCellData*>(key->inq_data());
        if (!data)
            continue;
        KIVColour colour = colour_of(*data);
        transform.transform(colour);
        set_colour_of(*data, colour);
    }
}

KIVString ColourSubColumn::inq_summary()
{
    return SubColumn::inq_summary() + describe(inq_colour(1), colour_interp_mode);
}

gsl::owner<SubColPrefs*> ColourSubColumn::create_preferences_object()
{
    return new ColourSubColPrefs(this);
}

void ColourSubColumn::apply_preferences_object(SubColPrefs* prefs)
{
    if (const auto* colour = object_cast<ColourSubColPrefs>(prefs))
        set_colour_interp_mode(colour->inq_mode());
}
