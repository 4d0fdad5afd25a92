#include "xsheet/colour/hdr/ColourKeyCell.h"

#include "kivlib/hdr/object_cast.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"

KIV_STORED_CLASS(ColourKeyCell, -1);
KIV_STORED_CLASS(ColourCellData, -1);

namespace {
struct Cmyk {
    float cyan, magenta, yellow, black;
};

Cmyk cmyk_of(const KIVColour& colour)
{
    Cmyk parts{};
    colour.inq_cmyk(&parts.cyan, &parts.magenta, &parts.yellow, &parts.black);
    return parts;
}

KIVColour blend_cmyk(const KIVColour& from, const KIVColour& to, double factor)
{
    const Cmyk a = cmyk_of(from);
    const Cmyk b = cmyk_of(to);
    const auto blend = [&](float x, float y) { return (1.0 - factor) * x + factor * y; };
    KIVColour colour;
    colour.set_cmyk(blend(a.cyan, b.cyan), blend(a.magenta, b.magenta), blend(a.yellow, b.yellow),
                    blend(a.black, b.black));
    return colour;
}

KIVColour blend_hsb(KIVColour from, const KIVColour& to, double factor)
{
    from.interpolate_hsb_to(to, static_cast<float>(factor));
    return from;
}

const BaseNumericCellData* inq_data_of(KeyCell* key)
{
    return key ? static_cast<const BaseNumericCellData*>(key->inq_data()) : nullptr;
}
} // namespace

KIVColour colour_of(const BaseNumericCellData& data)
{
    return {data.inq_element(0), data.inq_element(1), data.inq_element(2)};
}

gsl::owner<CellData*> ColourKeyCell::create_data()
{
    return new ColourCellData(this);
}

gsl::owner<BaseCell*> ColourKeyCell::create_inbetween(int offset)
{
    return new ColourInbetweenCell(this, offset);
}

gsl::owner<CellData*> ColourInbetweenCell::create_data()
{
    return new ColourCellData(this);
}

// The base has blended red, green and blue already.
ColourCellData::ColourCellData(ColourInbetweenCell* cell) : Numeric3CellData(cell)
{
    KeyCell* key = cell->inq_prev_key();
    const BaseNumericCellData* from = inq_data_of(key);
    const BaseNumericCellData* to = inq_data_of(cell->inq_next_key());
    const auto* column = object_cast<ColourSubColumn>(key ? key->inq_sub_column() : nullptr);
    if (!from || !to || !column || column->inq_colour_interp_mode() == ColourSubColumn::RGB_INTERP)
        return;
    const bool is_hsv = column->inq_colour_interp_mode() == ColourSubColumn::HSV_INTERP;
    const KIVColour start = colour_of(*from);
    const KIVColour end = colour_of(*to);
    const double factor = cell->inq_ifactor();
    set_colour(is_hsv ? blend_hsb(start, end, factor) : blend_cmyk(start, end, factor));
}

KIVColour ColourCellData::inq_colour() const
{
    return colour_of(*this);
}

void ColourCellData::set_colour(const KIVColour& colour)
{
    set_colour_of(*this, colour);
}

void set_colour_of(BaseNumericCellData& data, const KIVColour& colour)
{
    float rgb[3] = {};
    colour.inq_rgb(&rgb[0], &rgb[1], &rgb[2]);
    for (int i = 0; i < 3; ++i)
        data.set_element(i, static_cast<double>(rgb[i]));
}
