#include "xsheet/numeric/hdr/NumericColumnPolicy.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

KIV_STORED_CLASS(NumericColumnPolicy, -1);
KIV_STORED_CLASS(NormalNumericColumnPolicy, -1);

template <class Record> void NumericColumnPolicy::record(Record& r)
{
    r.back_link(sub_column);
}

KIV_STORED_RECORD(NumericColumnPolicy);

namespace {
/// Empty without a key or its data.
Vector inq_value_of(KeyCell* key)
{
    const CellData* data = key ? key->inq_data() : nullptr;
    return data ? static_cast<const BaseNumericCellData*>(data)->inq_value() : Vector();
}

Vector blend(Vector from, const Vector& to, double factor)
{
    if (from.size() != to.size())
        return (1.0 - factor) * from + factor * to;
    const std::span<double> elements = from.inq_elements();
    const std::span<const double> targets = to.inq_elements();
    for (std::size_t i = 0; i < elements.size(); ++i)
        elements[i] = (1.0 - factor) * elements[i] + factor * targets[i];
    return from;
}
} // namespace

Vector NormalNumericColumnPolicy::update_inbetween_value(NumericInbetweenCell* cell)
{
    return blend(inq_value_of(cell->inq_prev_key()), inq_value_of(cell->inq_next_key()),
                 cell->inq_ifactor());
}

gsl::owner<NumericColumnPolicy*>
NormalNumericColumnPolicy::duplicate(NumericSubColumn* copy_owner) const
{
    return new NormalNumericColumnPolicy(copy_owner);
}
