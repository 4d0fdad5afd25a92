#pragma once

#include "xsheet/numeric/hdr/NumericCellData.h"

/// New data of `order` elements for a key or an in-between.
template <class Cell> gsl::owner<CellData*> make_numeric_data(Cell* cell, int order)
{
    switch (order) {
    case 1:
        return new Numeric1CellData(cell);
    case 2:
        return new Numeric2CellData(cell);
    case 3:
        return new Numeric3CellData(cell);
    case 4:
        return new Numeric4CellData(cell);
    default:
        return new NumericNCellData(cell, order);
    }
}
