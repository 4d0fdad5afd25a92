#include "xsheet/numeric/hdr/NumericCellData.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"

KIV_STORED_CLASS(BaseNumericCellData, -1);
KIV_STORED_CLASS(Numeric1CellData, -1);
KIV_STORED_CLASS(Numeric2CellData, -1);
KIV_STORED_CLASS(Numeric3CellData, -1);
KIV_STORED_CLASS(Numeric4CellData, -1);
KIV_STORED_CLASS(NumericNCellData, -1);

namespace {
const NumericSubColumn* find_sub_column_of_key(const BaseCell* cell)
{
    if (!cell || !cell->is_a_key())
        return nullptr;
    return static_cast<const NumericKeyCell*>(cell)->inq_numeric_sub_column();
}

double first_of(const Vector& value)
{
    return value.size() > 0 ? value.elem(0) : 0.0;
}
} // namespace

BaseNumericCellData::BaseNumericCellData(BaseCell* cell) : CellData(cell) {}

BaseNumericCellData::BaseNumericCellData(KIVIStream& stream) : CellData(stream) {}

bool BaseNumericCellData::check_number_in_limits(double* value, int index) const
{
    const NumericSubColumn* sub_column = find_sub_column_of_key(inq_cell());
    if (!sub_column || index < 0 || index >= inq_order())
        return true;
    const double minimum = sub_column->inq_minimum_values().elem(index);
    const double maximum = sub_column->inq_maximum_values().elem(index);
    if (*value < minimum)
        *value = minimum;
    else if (*value > maximum)
        *value = maximum;
    else
        return true;
    return false;
}

void BaseNumericCellData::set_value(const Vector& value)
{
    const int n = std::min(inq_order(), value.size());
    for (int i = 0; i < n; ++i)
        set_element(i, value.elem(i));
    data_changed();
}

Vector BaseNumericCellData::construct_elements(NumericInbetweenCell* cell)
{
    const auto* key = static_cast<NumericKeyCell*>(cell->inq_prev_key());
    if (!key)
        return {};
    if (const RatioKeyCellData* ratio_data = key->inq_ratio_data())
        return ratio_data->inq_value(cell);
    const NumericSubColumn* sub_column = key->inq_numeric_sub_column();
    NumericColumnPolicy* policy = sub_column ? sub_column->inq_policy() : nullptr;
    return policy ? policy->update_inbetween_value(cell) : Vector();
}

double BaseNumericCellData::inq_blank_element(const NumericKeyCell& key, int i)
{
    const NumericSubColumn* sub_column = key.inq_numeric_sub_column();
    return sub_column ? sub_column->inq_blank_value(i) : 0.0;
}

Numeric1CellData::Numeric1CellData(NumericKeyCell* key)
    : BaseNumericCellData(key), element(inq_blank_element(*key, 0))
{}

Numeric1CellData::Numeric1CellData(NumericInbetweenCell* cell)
    : BaseNumericCellData(cell), element(first_of(construct_elements(cell)))
{}

void Numeric1CellData::set_element(int, double value)
{
    check_number_in_limits(&value, 0);
    element = value;
    data_changed();
}

template <class Record> void Numeric1CellData::record(Record& r)
{
    r.value(element);
}

KIV_STORED_RECORD(Numeric1CellData);

Numeric2CellData::Numeric2CellData(NumericKeyCell* key) : FixedNumericCellData(key)
{
    elements = {inq_blank_element(*key, 0), inq_blank_element(*key, 1)};
}

Numeric2CellData::Numeric2CellData(NumericInbetweenCell* cell) : FixedNumericCellData(cell)
{
    elements = Vector2(construct_elements(cell));
}

// All three elements begin as the last one, unlike those of two and of four.
Numeric3CellData::Numeric3CellData(NumericKeyCell* key) : FixedNumericCellData(key)
{
    const double blank = inq_blank_element(*key, elements.size() - 1);
    elements = {blank, blank, blank};
}

Numeric3CellData::Numeric3CellData(NumericInbetweenCell* cell) : FixedNumericCellData(cell)
{
    elements = Vector3(construct_elements(cell));
}

Numeric4CellData::Numeric4CellData(NumericKeyCell* key) : FixedNumericCellData(key)
{
    for (int i = 0; i < elements.size(); ++i)
        elements.elem(i) = inq_blank_element(*key, i);
}

Numeric4CellData::Numeric4CellData(NumericInbetweenCell* cell) : FixedNumericCellData(cell)
{
    elements = Vector4(construct_elements(cell));
}

NumericNCellData::NumericNCellData(NumericKeyCell* key, int order)
    : BaseNumericCellData(key), elements(order)
{
    for (int i = 0; i < elements.size(); ++i)
        elements.elem(i) = inq_blank_element(*key, i);
}

NumericNCellData::NumericNCellData(NumericInbetweenCell* cell, int order)
    : BaseNumericCellData(cell), elements(construct_elements(cell))
{
    elements.resize(order);
}

int NumericNCellData::inq_order() const
{
    const BaseCell* cell = inq_cell();
    const NumericSubColumn* sub_column = find_sub_column_of_key(cell);
    if (!sub_column && cell)
        sub_column = find_sub_column_of_key(cell->inq_prev_key());
    return sub_column ? sub_column->inq_order() : elements.size();
}

void NumericNCellData::set_element(int i, double value)
{
    check_number_in_limits(&value, i);
    elements.elem(i) = value;
    data_changed();
}

template <class Record> void NumericNCellData::record(Record& r)
{
    r.embedded(elements);
}

KIV_STORED_RECORD(NumericNCellData);
