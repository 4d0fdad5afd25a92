#pragma once

#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

/// Sets one element of the key on frame 1, which is made if there is none.
inline void set_first_key(NumericSubColumn* column, double value, int element = 0)
{
    KeyCell* key = column->inq_first_key() ? column->inq_first_key() : column->make_key(1);
    static_cast<BaseNumericCellData*>(key->inq_data())->set_element(element, value);
}

/// A new column with a key on frame 1.
template <class Kind> gsl::owner<Kind*> keyed(double value, gsl::owner<Kind*> column = new Kind)
{
    column->init_after_construction();
    set_first_key(column, value);
    return column;
}
