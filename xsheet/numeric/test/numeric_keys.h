#pragma once

#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <initializer_list>

inline BaseNumericCellData* data_of(BaseCell* cell)
{
    return static_cast<BaseNumericCellData*>(cell->inq_data());
}

/// A new key on a frame with these elements.
inline NumericKeyCell* key_at(NumericSubColumn& column, int frame,
                              std::initializer_list<double> value)
{
    auto* key = static_cast<NumericKeyCell*>(column.make_key(frame));
    int i = 0;
    for (const double element : value)
        data_of(key)->set_element(i++, element);
    return key;
}
