#include "xsheet/numeric/hdr/NumericInbetweenCell.h"

#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/src/make_numeric_data.h"

NumericInbetweenCell::NumericInbetweenCell(NumericKeyCell* key, int offset)
    : InbetweenCell(key, offset)
{}

gsl::owner<CellData*> NumericInbetweenCell::create_data()
{
    const auto* key = static_cast<NumericKeyCell*>(inq_prev_key());
    return make_numeric_data(this, key ? key->inq_order() : 1);
}
