#pragma once

#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <gtest/gtest.h>

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

/// Keys a move column that holds X and Y apart.
inline void set_place(MoveColumn* move, const Vector2& place)
{
    const unsigned long labels[] = {MoveColumn::XPOS_SUBCOL, MoveColumn::YPOS_SUBCOL};
    for (int i = 0; i < 2; ++i)
        set_first_key(static_cast<NumericSubColumn*>(move->find_sub_column(labels[i])),
                      place.elem(i));
}

inline void expect_point(const Vector2& point, double x, double y)
{
    EXPECT_NEAR(point.x(), x, 1e-12);
    EXPECT_NEAR(point.y(), y, 1e-12);
}
