#include "xsheet/move/hdr/PathSubColumn.h"

#include "curveslib/hdr/Fairing.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/numeric/src/object_cast.h"

KIV_STORED_CLASS(PathSubColumn, -1);

PathSubColumn::PathSubColumn() : NumericSubColumn(2)
{
    set_policy(new PathNumericColumnPolicy(this));
}

PathSubColumn::PathSubColumn(const NumericSubColumn& source) : NumericSubColumn(source)
{
    set_order(2);
    if (!inq_path_policy())
        set_policy(new PathNumericColumnPolicy(this));
}

gsl::owner<KeyCell*> PathSubColumn::create_new_key_with_label(int new_label)
{
    return new PathKeyCell(this, -1, static_cast<unsigned>(new_label));
}

PathNumericColumnPolicy* PathSubColumn::inq_path_policy() const
{
    return object_cast<PathNumericColumnPolicy>(inq_policy());
}

double PathSubColumn::inq_distance_along_path(int frame)
{
    BaseCell* cell = inq_cell(frame);
    if (!cell)
        return 0.0;
    KIVObject* owner = cell->is_an_inbetween() ? cell->inq_prev_key() : cell;
    auto* key = object_cast<PathKeyCell>(owner);
    if (!key)
        return 0.0;
    return cell->is_an_inbetween()
               ? static_cast<PathInbetweenCell*>(cell)->inq_distance_along_path()
               : key->inq_distance_along_path();
}

gsl::owner<Fairing*> PathSubColumn::extract_column_fairing()
{
    std::vector<double> distances;
    for (KeyCell* key = inq_first_key(); key; key = key->inq_next_key())
        distances.push_back(inq_distance_along_path(key->inq_number()));
    return make_fairing_through(distances);
}

void PathSubColumn::calc_min_and_max_values(double* min, double* max)
{
    *min = 1000000.0;
    *max = 0.0;
    for (KeyCell* cell = inq_first_key(); cell; cell = cell->inq_next_key()) {
        auto* key = object_cast<PathKeyCell>(cell);
        if (!key)
            continue;
        const double distance = key->inq_distance_along_path();
        *min = std::min(*min, distance);
        *max = std::max({*max, distance, key->inq_path_length()});
    }
}
