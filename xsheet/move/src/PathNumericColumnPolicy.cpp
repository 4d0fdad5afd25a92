#include "xsheet/move/hdr/PathNumericColumnPolicy.h"

#include "curveslib/hdr/SquidgeSet.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

KIV_STORED_CLASS(PathNumericColumnPolicy, -1);

namespace {
constexpr unsigned KEY_BUCKETS = 16;

double calc_shorter_way(const BaseBeadKnot* from, const BaseBeadKnot* to)
{
    const Squidge* squidge = from->inq_squidge();
    return std::min(squidge->distance_along_curve(from, to, 1),
                    squidge->distance_along_curve(from, to, -1));
}

/// `walked` is the way from key to key so far.
double calc_distance(const BaseBeadKnot* bead, double walked)
{
    if (!bead)
        return 0.0;
    const Squidge* squidge = bead->inq_squidge();
    return squidge->is_closed() ? walked
                                : squidge->distance_along_curve(squidge->inq_first_knot(), bead, 1);
}

int choose_direction(const BaseBeadKnot* from, const BaseBeadKnot* to)
{
    const Squidge* squidge = from->inq_squidge();
    if (!squidge->is_closed())
        return squidge->direction_to_go(from, to);
    const double forwards = squidge->distance_along_curve(from, to, 1);
    return squidge->distance_along_curve(from, to, -1) < forwards ? -1 : 1;
}
} // namespace

PathNumericColumnPolicy::PathNumericColumnPolicy(NumericSubColumn* sub_column)
    : NumericColumnPolicy(sub_column), squidges(std::make_unique<SquidgeSet>()),
      key_table(KEY_BUCKETS)
{
    make_table();
}

PathNumericColumnPolicy::PathNumericColumnPolicy(KIVIStream& stream)
    : NumericColumnPolicy(stream), key_table(KEY_BUCKETS)
{
    RecordReader reader(stream);
    record(reader);
    make_table();
}

PathNumericColumnPolicy::~PathNumericColumnPolicy() = default;

template <class Record> void PathNumericColumnPolicy::record(Record& r)
{
    r.owned(squidges);
}

void PathNumericColumnPolicy::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

void PathNumericColumnPolicy::make_table()
{
    squidge_table = std::make_unique<SquidgeTable>();
    if (squidges)
        squidges->add_to_table(*squidge_table);
}

gsl::owner<NumericColumnPolicy*>
PathNumericColumnPolicy::duplicate(NumericSubColumn* copy_owner) const
{
    auto copy = std::make_unique<PathNumericColumnPolicy>(copy_owner);
    if (squidges)
        copy->set_squidges(squidges->duplicate_make_base());
    copy->setup_key_table();
    return copy.release();
}

void PathNumericColumnPolicy::load_finished()
{
    setup_key_table();
}

void PathNumericColumnPolicy::set_squidges(gsl::owner<SquidgeSet*> set)
{
    squidges.reset(set);
    make_table();
}

void PathNumericColumnPolicy::set_squidge_table(gsl::owner<SquidgeTable*> table)
{
    squidge_table.reset(table);
}

const KeyCell* PathNumericColumnPolicy::inq_first_key() const
{
    return inq_sub_column() ? inq_sub_column()->inq_first_key() : nullptr;
}

void PathNumericColumnPolicy::setup_key_table()
{
    DictionaryIterator entry(&key_table);
    while (entry.advance())
        entry.remove();
    if (!inq_sub_column())
        return;
    for (KeyCell* key = inq_sub_column()->inq_first_key(); key; key = key->inq_next_key())
        if (auto* path_key = object_cast<PathKeyCell>(key))
            added_key(path_key);
}

void PathNumericColumnPolicy::added_key(PathKeyCell* key)
{
    key_table.remove(key->inq_bead_label());
    key_table.add(key->inq_bead_label(), *key);
}

void PathNumericColumnPolicy::removed_key(PathKeyCell* key)
{
    key_table.remove(key->inq_bead_label());
}

PathKeyCell* PathNumericColumnPolicy::get_key_with_label(unsigned long bead_label) const
{
    KIVObject* key = nullptr;
    return key_table.lookup_assoc(bead_label, &key) ? static_cast<PathKeyCell*>(key) : nullptr;
}

BaseBeadKnot* PathNumericColumnPolicy::find_bead(const KeyCell* key) const
{
    const auto* path_key = object_cast<PathKeyCell>(const_cast<KeyCell*>(key));
    if (!path_key || !squidges || !squidge_table)
        return nullptr;
    return squidge_table->lookup_bead_knot(squidges->inq_label(), path_key->inq_bead_label());
}

Vector PathNumericColumnPolicy::update_key_value(NumericKeyCell* key)
{
    const BaseBeadKnot* bead = find_bead(key);
    return bead ? bead->calc_position() : Vector2();
}

Vector PathNumericColumnPolicy::update_inbetween_value(NumericInbetweenCell* cell)
{
    if (!squidge_table)
        return Vector2();
    return calculate_inbetween_value(find_bead(cell->inq_prev_key()),
                                     find_bead(cell->inq_next_key()), cell->inq_ifactor());
}

// A key without a road to the next one holds.
Vector PathNumericColumnPolicy::calculate_inbetween_value(BaseBeadKnot* from, BaseBeadKnot* to,
                                                          double factor) const
{
    if (!from)
        return {};
    const Squidge* squidge = from->inq_squidge();
    if (!to || to->inq_squidge() != squidge)
        return from->calc_position();
    const int direction = choose_direction(from, to);
    const double distance = squidge->distance_along_curve(from, to, direction);
    const CurvePosition place =
        squidge->find_position_along(from->inq_curve_position(), direction, factor * distance);
    return place.knot->calc_at_param(place.parameter);
}

double PathNumericColumnPolicy::calc_way_to_next_key(const KeyCell* key) const
{
    const BaseBeadKnot* from = find_bead(key);
    const BaseBeadKnot* to = find_bead(key->inq_next_key());
    return from && to && from->inq_squidge() == to->inq_squidge() ? calc_shorter_way(from, to)
                                                                  : 0.0;
}

double PathNumericColumnPolicy::inq_distance_along_path(PathKeyCell* key) const
{
    const BaseBeadKnot* bead = find_bead(key);
    if (!bead || !bead->inq_squidge()->is_closed())
        return calc_distance(bead, 0.0);
    double walked = 0.0;
    for (const KeyCell* k = inq_first_key(); k && k != key; k = k->inq_next_key())
        walked += calc_way_to_next_key(k);
    return calc_distance(bead, walked);
}

std::vector<double> PathNumericColumnPolicy::inq_distances_along_path() const
{
    std::vector<double> distances;
    double walked = 0.0;
    for (const KeyCell* key = inq_first_key(); key; key = key->inq_next_key()) {
        distances.push_back(calc_distance(find_bead(key), walked));
        walked += calc_way_to_next_key(key);
    }
    return distances;
}

void PathNumericColumnPolicy::set_distance_along_path(PathKeyCell* key, double distance)
{
    BaseBeadKnot* bead = find_bead(key);
    if (!bead)
        return;
    Squidge* squidge = bead->inq_squidge();
    const BaseBeadKnot* start = squidge->is_closed() ? find_bead(inq_first_key()) : nullptr;
    if (!start || start->inq_squidge() != squidge)
        start = squidge->inq_first_knot();
    squidge->move_bead(bead,
                       squidge->find_position_along(start->inq_curve_position(), 1, distance));
    key->key_changed();
}

double PathNumericColumnPolicy::inq_path_length(PathKeyCell* key) const
{
    const BaseBeadKnot* bead = find_bead(key);
    return bead ? bead->inq_squidge()->calc_length() : 0.0;
}

bool PathNumericColumnPolicy::diff_path_as_next_key(PathKeyCell* key) const
{
    const BaseBeadKnot* bead = find_bead(key);
    const BaseBeadKnot* next = find_bead(key->inq_next_key());
    return bead && next && bead->inq_squidge() != next->inq_squidge();
}
