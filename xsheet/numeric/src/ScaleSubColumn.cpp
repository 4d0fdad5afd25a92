#include "xsheet/numeric/hdr/ScaleSubColumn.h"

#include "kivlib/hdr/FormatVersions.h"
#include "xsheet/numeric/src/smallest_size.h"

KIV_STORED_CLASS(ScaleKeyCell, -1);
KIV_STORED_CLASS(ScaleSubColumn, -1);

namespace {
constexpr FormatVersions HAS_OWN_DEFAULT = since(116);
}

ScaleSubColumn::ScaleSubColumn() : NumericSubColumn(1)
{
    set_default_values(Vector(1, 1.0));
    set_minimum_values(Vector(1, SMALLEST_SIZE));
    init_units("ScaleUnitType", KIV_UNIT_PERCENT, "ScalePrecision");
}

ScaleSubColumn::ScaleSubColumn(KIVIStream& stream) : NumericSubColumn(stream)
{
    if (!HAS_OWN_DEFAULT.hold(stream.inq_version()))
        set_default_values(with_element(inq_default_values(), 0, 1.0));
    set_minimum_values(with_element(inq_minimum_values(), 0, SMALLEST_SIZE));
}

gsl::owner<KeyCell*> ScaleSubColumn::create_new_key_with_label(int new_label)
{
    return new ScaleKeyCell(this, -1, static_cast<unsigned>(new_label));
}
