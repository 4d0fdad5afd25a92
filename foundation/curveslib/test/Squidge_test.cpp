#include "curveslib/hdr/SquidgeSet.h"

#include <gtest/gtest.h>
#include <random>

namespace {
const Vector2 NO_HANDLE;

/// A square of a side of 100 with its lower left corner at the origin, run counter-clockwise.
std::unique_ptr<Squidge> make_square(bool closed)
{
    auto square = std::make_unique<Squidge>(closed);
    for (const Vector2& corner :
         {Vector2(0, 0), Vector2(100, 0), Vector2(100, 100), Vector2(0, 100)})
        square->add_knot(corner, NO_HANDLE, NO_HANDLE);
    return square;
}

void expect_near(const Vector2& place, double x, double y)
{
    EXPECT_NEAR(place.x(), x, 1e-6);
    EXPECT_NEAR(place.y(), y, 1e-6);
}

Vector2 place_of(const CurvePosition& position)
{
    return position.knot->calc_at_param(position.parameter);
}

/// The way from a knot to a parameter behind it, by many short chords: the shorter they are, the
/// more regularly their sum falls short.
double measure_by_chords(const Knot& knot, double to)
{
    constexpr int CHORDS = 1 << 15;
    double fine = 0.0, coarse = 0.0;
    Vector2 last = knot.calc_at_param(0.0), last_even = last;
    for (int i = 1; i <= CHORDS; ++i) {
        const Vector2 place = knot.calc_at_param(to * i / CHORDS);
        fine += place.distance(std::exchange(last, place));
        if (i % 2 == 0)
            coarse += place.distance(std::exchange(last_even, place));
    }
    return fine + (fine - coarse) / 3.0;
}

double measure_by_chords(const CurvePosition& to)
{
    double length = measure_by_chords(*to.knot, to.parameter);
    for (const Knot* knot = to.knot->inq_prev(); knot; knot = knot->inq_prev())
        length += measure_by_chords(*knot, 1.0);
    return length;
}

/// Places and handles of no order, and a span each that turns on the spot, doubles back on a line
/// and stands still.
std::unique_ptr<Squidge> make_wild_curve(bool closed)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(-200.0, 200.0);
    const auto anywhere = [&] { return Vector2(number(random), number(random)); };
    auto curve = std::make_unique<Squidge>(closed);
    for (int i = 0; i < 8; ++i)
        curve->add_knot(anywhere(), anywhere(), anywhere());
    curve->add_knot({0.0, 0.0}, NO_HANDLE, {100.0, 100.0}); // a cusp in the middle
    curve->add_knot({100.0, 0.0}, {-100.0, 100.0}, {60.0, 0.0});
    curve->add_knot({110.0, 0.0}, {-70.0, 0.0}, NO_HANDLE); // there and back
    curve->add_knot({110.0, 0.0}, NO_HANDLE, NO_HANDLE);
    return curve;
}

/// Every question about a curve that has no length or none to speak of.
void expect_to_stand_at(Squidge& curve, const Vector2& place)
{
    const Bead* bead = curve.add_bead({curve.inq_knots().back().get(), 0.5}, 1);
    const Knot* first = curve.inq_first_knot();
    EXPECT_EQ(curve.calc_length(), 0.0);
    EXPECT_EQ(curve.distance_along_curve(first, bead, 1), 0.0);
    EXPECT_EQ(curve.distance_along_curve(bead, first, -1), 0.0);
    EXPECT_EQ(curve.direction_to_go(first, bead), 1);
    EXPECT_EQ(bead->calc_position(), place);
    for (const double distance : {-1.0, 0.0, 3.5})
        EXPECT_EQ(place_of(curve.find_position_along(bead->inq_curve_position(), 1, distance)),
                  place);
}
} // namespace

TEST(Squidge, goes_a_distance_round_or_to_its_end)
{
    const auto closed = make_square(true);
    const CurvePosition start = closed->inq_knots()[1]->inq_curve_position();
    expect_near(place_of(closed->find_position_along(start, 1, 150.0)), 50.0, 100.0);
    expect_near(place_of(closed->find_position_along(start, -1, 130.0)), 0.0, 30.0);
    expect_near(place_of(closed->find_position_along(start, 1, 825.0)), 100.0, 25.0);
    const auto open = make_square(false);
    const CurvePosition second = open->inq_knots()[1]->inq_curve_position();
    expect_near(place_of(open->find_position_along(second, 1, 900.0)), 0.0, 100.0);
    expect_near(place_of(open->find_position_along(second, -1, 900.0)), 0.0, 0.0);
}

TEST(Squidge, measures_and_goes_its_way_exactly)
{
    constexpr double EXACT = 1e-9; // of the length
    for (const bool closed : {false, true}) {
        const auto curve = make_wild_curve(closed);
        const double length = curve->calc_length();
        const Knot* last = curve->inq_knots()[closed ? 11 : 10].get();
        EXPECT_NEAR(length, measure_by_chords({last, 1.0}), EXACT * length);
        for (double share = 0.0; share <= 1.0; share += 0.08) {
            const CurvePosition place = curve->find_position_along(
                curve->inq_first_knot()->inq_curve_position(), 1, share * length);
            EXPECT_NEAR(measure_by_chords(place), share * length, EXACT * length) << share;
            Bead* bead = curve->add_bead(place, 1);
            EXPECT_NEAR(curve->distance_along_curve(curve->inq_first_knot(), bead, 1),
                        share * length, EXACT * length);
        }
    }
}

TEST(Squidge, stands_where_it_has_no_length)
{
    for (const bool closed : {false, true}) {
        for (const int count : {1, 2, 5}) {
            Squidge curve(closed);
            for (int i = 0; i < count; ++i)
                curve.add_knot({3.0, 4.0}, NO_HANDLE, NO_HANDLE);
            expect_to_stand_at(curve, {3.0, 4.0});
        }
    }
    Squidge loop(true); // from its one knot to itself
    Knot* knot = loop.add_knot({0.0, 0.0}, {-100.0, 0.0}, {0.0, 100.0});
    EXPECT_NEAR(loop.calc_length(), measure_by_chords({knot, 1.0}), 1e-7);
    EXPECT_GT(loop.calc_length(), 100.0);
    Squidge point(false);
    knot = point.add_knot({5.0, 6.0}, {1.0, 1.0}, {9.0, 9.0});
    expect_to_stand_at(point, {5.0, 6.0});
}
