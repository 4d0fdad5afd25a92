#include "xsheet/numeric/hdr/AngleSubColumn.h"

KIV_STORED_CLASS(AngleKeyCell, -1);
KIV_STORED_CLASS(AngleSubColumn, -1);

AngleSubColumn::AngleSubColumn() : NumericSubColumn(1)
{
    init_units("AngleUnitType", KIV_UNIT_DEGREES, "AnglePrecision");
}

gsl::owner<KeyCell*> AngleSubColumn::create_new_key_with_label(int new_label)
{
    return new AngleKeyCell(this, -1, static_cast<unsigned>(new_label));
}
