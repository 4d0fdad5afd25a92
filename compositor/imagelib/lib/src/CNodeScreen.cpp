#include "compositor/imagelib/lib/hdr/CNodeScreen.h"

#include "xsheet/colour/hdr/ColourSubColumn.h"

namespace {
constexpr int COLOUR = 8; // the kind of a colour sub-column
}

CNodeScreen::CNodeScreen()
{
    init_subcolumn(new ColourSubColumn, "Color");
}

ColourSubColumn* CNodeScreen::inq_colour_subcolumn() const
{
    SubColumn* column = inq_subcolumn();
    const bool has_colours = column && column->inq_type() == COLOUR;
    return has_colours ? static_cast<ColourSubColumn*>(column) : nullptr;
}

KIVColour CNodeScreen::inq_colour(int frame) const
{
    ColourSubColumn* colours = inq_colour_subcolumn();
    return colours ? colours->inq_colour(frame) : KIVColour(0.0);
}
