#include "xsheet/move/hdr/PathSubColumn.h"

#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"

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

// Keys beyond the end go, and nobody is told of them.
void PathSubColumn::set_length(int frames)
{
    NumericSubColumn::set_length(frames);
    if (PathNumericColumnPolicy* policy = inq_path_policy())
        policy->setup_key_table();
}

std::vector<double> PathSubColumn::inq_distances_along_path() const
{
    const PathNumericColumnPolicy* policy = inq_path_policy();
    return policy ? policy->inq_distances_along_path() : std::vector<double>();
}

gsl::owner<Fairing*> PathSubColumn::extract_column_fairing()
{
    return make_fairing_through(inq_distances_along_path());
}

void PathSubColumn::calc_min_and_max_values(double* min, double* max)
{
    *min = 1000000.0;
    *max = 0.0;
    KeyCell* cell = inq_first_key();
    for (const double distance : inq_distances_along_path()) {
        if (auto* key = object_cast<PathKeyCell>(cell)) {
            *min = std::min(*min, distance);
            *max = std::max({*max, distance, key->inq_path_length()});
        }
        cell = cell->inq_next_key();
    }
}
