#pragma once

#include "kivlib/hdr/object_cast.h"
#include "xsheet/node/hdr/XSNode.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <algorithm>

// The timed numbers of an effect: a sub-column of one element each, under labels from 1.

struct AmountRange {
    double initial;
    double least;
    double most;
    KIVUnitType unit;
};

inline constexpr double FULL_AMOUNT = 1.0; // a hundred per cent
inline constexpr AmountRange NOTHING_AT_FIRST = {0.0, 0.0, FULL_AMOUNT, KIV_UNIT_PERCENT};
inline constexpr AmountRange ALL_AT_FIRST = {FULL_AMOUNT, 0.0, FULL_AMOUNT, KIV_UNIT_PERCENT};

inline gsl::owner<NumericSubColumn*> new_amount(const AmountRange& range)
{
    auto* amount = new NumericSubColumn(1);
    amount->set_default_values(Vector(1, range.initial));
    amount->set_minimum_values(Vector(1, range.least));
    amount->set_maximum_values(Vector(1, range.most));
    amount->set_unit_type(range.unit);
    return amount;
}

inline NumericSubColumn* find_amount(const XSNode& node, unsigned long label)
{
    return object_cast<NumericSubColumn>(node.inq_subcolumn(label));
}

/// Within the range, whatever a file holds.
inline double inq_amount(NumericSubColumn* amount, const AmountRange& range, int frame)
{
    const double value = amount ? amount->inq_element(0, frame) : range.initial;
    return std::clamp(value, range.least, range.most);
}
