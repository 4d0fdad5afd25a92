#pragma once

#include "compositor/imagelib/lib/hdr/CNodeScreenBase.h"

class ColourSubColumn;

/// A card whose colour is keyed in the exposure sheet.
class CNodeScreen : public CNodeScreenBase {
    KIV_NODE(CNodeScreen, CNodeScreenBase);

public:
    CNodeScreen();
    explicit CNodeScreen(KIVIStream& stream) : CNodeScreenBase(stream) {}

    /// Opaque black without its column.
    KIVColour inq_colour(int frame) const override;

    /// Null if the node has no colours in the sheet.
    ColourSubColumn* inq_colour_subcolumn() const;
};
