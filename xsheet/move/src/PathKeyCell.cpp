#include "xsheet/move/hdr/PathKeyCell.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

KIV_STORED_CLASS(PathKeyCell, -1);

template <class Record> void PathKeyCell::record(Record& r)
{
    r.value(bead_label);
}

KIV_STORED_RECORD(PathKeyCell);

PathNumericColumnPolicy* PathKeyCell::inq_path_policy() const
{
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    return sub_column ? object_cast<PathNumericColumnPolicy>(sub_column->inq_policy()) : nullptr;
}

gsl::owner<BaseCell*> PathKeyCell::create_inbetween(int offset)
{
    return new PathInbetweenCell(this, offset);
}

void PathKeyCell::key_changed()
{
    auto* data = static_cast<BaseNumericCellData*>(inq_data());
    PathNumericColumnPolicy* policy = inq_path_policy();
    if (policy && data) {
        const Vector place = policy->update_key_value(this);
        data->set_element(0, place.elem(0));
        data->set_element(1, place.elem(1));
    }
    NumericKeyCell::key_changed();
}

double PathKeyCell::inq_distance_along_path()
{
    const PathNumericColumnPolicy* policy = inq_path_policy();
    return policy ? policy->inq_distance_along_path(this) : 0.0;
}

void PathKeyCell::set_distance_along_path(double distance)
{
    if (PathNumericColumnPolicy* policy = inq_path_policy())
        policy->set_distance_along_path(this, distance);
}

double PathKeyCell::inq_path_length()
{
    const PathNumericColumnPolicy* policy = inq_path_policy();
    return policy ? policy->inq_path_length(this) : 0.0;
}

bool PathKeyCell::diff_path_as_next_key()
{
    const PathNumericColumnPolicy* policy = inq_path_policy();
    return policy && policy->diff_path_as_next_key(this);
}

double PathInbetweenCell::inq_distance_along_path()
{
    auto* key = static_cast<PathKeyCell*>(inq_prev_key());
    auto* next = object_cast<PathKeyCell>(inq_next_key());
    const double start = key->inq_distance_along_path();
    if (!next || key->diff_path_as_next_key())
        return start;
    return start + inq_ifactor() * (next->inq_distance_along_path() - start);
}
