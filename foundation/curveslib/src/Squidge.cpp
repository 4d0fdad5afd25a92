#include "curveslib/hdr/Squidge.h"

#include "kivlib/hdr/KIVIStream.h"
#include "kivlib/hdr/KIVOStream.h"

KIV_STORED_CLASS(Squidge, -1);

namespace {
constexpr std::size_t LEAST_KNOT_BYTES = 6 * sizeof(double) + sizeof(std::int64_t);
constexpr std::size_t LEAST_BEAD_BYTES = sizeof(std::int32_t) + sizeof(double);

// Gauss and Legendre's places and weights on the way from -1 to 1, one half of five.
constexpr double PLACES[] = {0.0, 0.5384693101056831, 0.9061798459386640};
constexpr double WEIGHTS[] = {0.5688888888888889, 0.4786286704993665, 0.2369268850561891};
constexpr int PIECES = 8; // of the way from knot to knot, each measured by itself

constexpr int MOST_STEPS = 50;
constexpr double CLOSE = 1e-10; // of the way from knot to knot
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
    return s * s * s * place + 3.0 * s * s * t * (place + after) +
           3.0 * s * t * t * (to->place + to->before) + t * t * t * to->place;
}

double Knot::calc_speed(double parameter) const
{
    const Knot* to = inq_next();
    const double t = parameter;
    const double s = 1.0 - t;
    const Vector2 middle = to->place + to->before - place - after;
    return (3.0 * s * s * after + 6.0 * s * t * middle - 3.0 * t * t * to->before).length();
}

double Knot::calc_length(double from, double to) const
{
    if (!inq_next())
        return 0.0;
    const double half = (to - from) / (2.0 * PIECES);
    double length = 0.0;
    for (int piece = 0; piece < PIECES; ++piece) {
        const double middle = from + half * (2.0 * piece + 1.0);
        length += WEIGHTS[0] * calc_speed(middle);
        for (int i = 1; i < 3; ++i)
            length += WEIGHTS[i] * (calc_speed(middle - half * PLACES[i]) +
                                    calc_speed(middle + half * PLACES[i]));
    }
    return length * half;
}

// Newton's steps, kept between what is known to lie before and behind.
double Knot::find_param_at(double length) const
{
    const double whole = calc_length(0.0, 1.0);
    if (whole <= 0.0 || length <= 0.0)
        return 0.0;
    if (length >= whole)
        return 1.0;
    double low = 0.0;
    double high = 1.0;
    double t = length / whole;
    for (int step = 0; step < MOST_STEPS; ++step) {
        const double error = calc_length(0.0, t) - length;
        if (std::abs(error) < CLOSE * whole)
            break;
        (error > 0.0 ? high : low) = t;
        const double speed = calc_speed(t);
        t = speed > 0.0 ? t - error / speed : low;
        if (t <= low || t >= high)
            t = (low + high) / 2.0;
    }
    return t;
}

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
    ends.clear();
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

const std::vector<double>& Squidge::inq_ends() const
{
    if (ends.empty()) {
        ends.reserve(knots.size());
        double end = 0.0;
        for (const auto& knot : knots)
            ends.push_back(end += knot->calc_length(0.0, 1.0));
    }
    return ends;
}

double Squidge::calc_length() const
{
    return knots.empty() ? 0.0 : inq_ends().back();
}

double Squidge::calc_distance_from_start(const CurvePosition& position) const
{
    const Knot& knot = *position.knot;
    const double start = knot.index > 0 ? inq_ends()[knot.index - 1] : 0.0;
    return start + knot.calc_length(0.0, position.parameter);
}

double Squidge::distance_along_curve(const BaseBeadKnot* from, const BaseBeadKnot* to,
                                     int direction) const
{
    const double way = direction * (calc_distance_from_start(to->inq_curve_position()) -
                                    calc_distance_from_start(from->inq_curve_position()));
    if (!closed)
        return std::abs(way);
    return way < 0.0 ? way + calc_length() : way;
}

int Squidge::direction_to_go(const BaseBeadKnot* from, const BaseBeadKnot* to) const
{
    const double start = calc_distance_from_start(from->inq_curve_position());
    return calc_distance_from_start(to->inq_curve_position()) < start ? -1 : 1;
}

CurvePosition Squidge::find_position_along(const CurvePosition& start, int direction,
                                           double distance) const
{
    const double goal = calc_distance_from_start(start) + direction * distance;
    const double length = calc_length();
    if (!closed || length <= 0.0)
        return find_position_at(std::clamp(goal, 0.0, length));
    return find_position_at(goal - length * std::floor(goal / length));
}

CurvePosition Squidge::find_position_at(double distance_from_start) const
{
    const std::vector<double>& all_ends = inq_ends();
    const auto end = std::ranges::lower_bound(all_ends, distance_from_start);
    if (end == all_ends.end())
        return {knots.back().get(), closed ? 1.0 : 0.0};
    const double start = end == all_ends.begin() ? 0.0 : *(end - 1);
    const Knot* knot = knots[static_cast<std::size_t>(end - all_ends.begin())].get();
    return {knot, knot->find_param_at(distance_from_start - start)};
}
