#include "xsheet/numeric/hdr/NumericTSubColumn.h"

KIV_STORED_CLASS(NumericTKeyCell, -1);
KIV_STORED_CLASS(NumericTSubColumn, -1);

gsl::owner<KeyCell*> NumericTSubColumn::create_new_key_with_label(int new_label)
{
    return new NumericTKeyCell(this, -1, static_cast<unsigned>(new_label));
}
