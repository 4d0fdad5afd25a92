#include "curveslib/hdr/Squidge.h"

#include "curveslib/src/ArcLengthTable.h"
#include "kivlib/hdr/KIVIStream.h"
#include "kivlib/hdr/KIVOStream.h"

KIV_STORED_CLASS(Squidge, -1);

namespace {
constexpr std::size_t LEAST_KNOT_BYTES = 6 * sizeof(double) + sizeof(std::int64_t);
constexpr std::size_t LEAST_BEAD_BYTES = sizeof(std::int32_t) + sizeof(double);

/// What is no number means 0.
CurvePosition keep_on_span(const CurvePosition& position)
{
    return {position.knot, position.parameter > 0.0 ? std::min(position.parameter, 1.0) : 0.0};
}
} // namespace

Vector2 BaseBeadKnot::calc_position() const
{
    const CurvePosition position = inq_curve_position();
    return position.knot->calc_at_param(position.parameter);
}

Squidge* BaseBeadKnot::inq_squidge() const
{
    return inq_curve_position().knot->inq_squidge();
}

Knot::Knot(Squidge* squidge, const Knot* prev, const Vector2& place, const Vector2& before,
           const Vector2& after, unsigned long label)
    : BaseBeadKnot(label), index(prev ? prev->index + 1 : 0), squidge(squidge), prev(prev),
      place(place), before(before), after(after)
{}

const Knot* Knot::inq_next() const
{
    return !next && squidge->is_closed() ? squidge->inq_first_knot() : next;
}

Vector2 Knot::calc_at_param(double parameter) const
{
    const Knot* to = inq_next();
    if (!to)
        return place;
    const double t = parameter;
    const double s = 1.0 - t;
    const double own = s * s * (1.0 + 2.0 * t); // the place and its handle's root
    const double others = t * t * (1.0 + 2.0 * s);
    return own * place + 3.0 * s * s * t * after + others * to->place +
           3.0 * s * t * t * to->before;
}

Bead::Bead(const CurvePosition& position, unsigned long label)
    : BaseBeadKnot(label), position(keep_on_span(position))
{}

void Bead::set_curve_position(const CurvePosition& to)
{
    position = keep_on_span(to);
}

Squidge::Squidge(bool closed) : closed(closed) {}

Squidge::~Squidge() = default;

Squidge::Squidge(const Squidge& other) : KIVObject(other), closed(other.closed)
{
    for (const auto& knot : other.knots)
        add_knot(knot->place, knot->before, knot->after, knot->inq_label());
    for (const auto& bead : other.beads) {
        const Knot* knot = knots[bead->inq_knot()->index].get();
        add_bead({knot, bead->inq_parameter()}, bead->inq_label());
    }
}

Squidge::Squidge(KIVIStream& stream) : KIVObject(stream)
{
    int stored_closed = 0;
    stream >> stored_closed;
    closed = stored_closed != 0;
    read_knots(stream);
    read_beads(stream);
}

void Squidge::read_knots(KIVIStream& stream)
{
    const int count = stream.read_count(LEAST_KNOT_BYTES);
    for (int i = 0; i < count; ++i) {
        unsigned long label = 0;
        stream >> label;
        const Vector2 place(stream);
        const Vector2 before(stream);
        const Vector2 after(stream);
        add_knot(place, before, after, label);
    }
}

void Squidge::read_beads(KIVIStream& stream)
{
    const int count = stream.read_count(LEAST_BEAD_BYTES);
    for (int i = 0; i < count; ++i) {
        unsigned long label = 0;
        int knot = 0;
        double parameter = 0.0;
        stream >> label >> knot >> parameter;
        if (knot >= 0 && static_cast<std::size_t>(knot) < knots.size())
            add_bead({knots[static_cast<std::size_t>(knot)].get(), parameter}, label);
        else
            stream.set_error_state(KIVStream::BAD_DATA);
    }
}

void Squidge::storer(KIVOStream& stream)
{
    Base::storer(stream);
    stream << int(closed) << static_cast<int>(knots.size());
    for (const auto& knot : knots) {
        stream << knot->inq_label();
        stream.insert_without_class_hdr(&knot->place);
        stream.insert_without_class_hdr(&knot->before);
        stream.insert_without_class_hdr(&knot->after);
    }
    stream << static_cast<int>(beads.size());
    for (const auto& bead : beads)
        stream << bead->inq_label() << static_cast<int>(bead->inq_knot()->index)
               << bead->inq_parameter();
}

void Squidge::move_bead(BaseBeadKnot* bead, const CurvePosition& to)
{
    bead->set_curve_position(to);
}

Knot* Squidge::add_knot(const Vector2& place, const Vector2& handle_before,
                        const Vector2& handle_after, unsigned long label)
{
    Knot* last = knots.empty() ? nullptr : knots.back().get();
    lengths.reset();
    knots.push_back(std::make_unique<Knot>(this, last, place, handle_before, handle_after, label));
    if (last)
        last->next = knots.back().get();
    return knots.back().get();
}

Bead* Squidge::add_bead(const CurvePosition& position, unsigned long label)
{
    beads.push_back(std::make_unique<Bead>(position, label));
    return beads.back().get();
}

const ArcLengthTable& Squidge::inq_lengths() const
{
    if (!lengths)
        lengths = std::make_unique<ArcLengthTable>(knots);
    return *lengths;
}

double Squidge::calc_length() const
{
    return inq_lengths().inq_length();
}

double Squidge::calc_distance_from_start(const CurvePosition& position) const
{
    return inq_lengths().distance_at(position, position.knot->index);
}

double Squidge::calc_distance_from_start(const BaseBeadKnot* bead_knot) const
{
    return calc_distance_from_start(bead_knot->inq_curve_position());
}

double Squidge::distance_along_curve(const BaseBeadKnot* from, const BaseBeadKnot* to,
                                     int direction) const
{
    const double way = direction * (calc_distance_from_start(to) - calc_distance_from_start(from));
    if (!closed)
        return std::abs(way);
    return way < 0.0 ? way + calc_length() : way;
}

int Squidge::direction_to_go(const BaseBeadKnot* from, const BaseBeadKnot* to) const
{
    return calc_distance_from_start(to) < calc_distance_from_start(from) ? -1 : 1;
}

CurvePosition Squidge::find_position_along(const CurvePosition& start, int direction,
                                           double distance) const
{
    const double goal = calc_distance_from_start(start) + direction * distance;
    const double length = calc_length();
    if (!closed || !(length > 0.0))
        return inq_lengths().position_at(goal);
    return inq_lengths().position_at(goal - length * std::floor(goal / length));
}
