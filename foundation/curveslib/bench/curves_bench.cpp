#include "curveslib/hdr/Fairing.h"
#include "curveslib/hdr/Squidge.h"

#include <benchmark/benchmark.h>
#include <random>

namespace {
constexpr int SPANS = 100;
constexpr int QUERIES = 1000;

/// A curve whose knots and handles lie in no order.
Squidge make_curve()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-100.0, 100.0);
    const auto anywhere = [&] { return Vector2(number(random), number(random)); };
    Squidge curve(false);
    for (int i = 0; i <= SPANS; ++i)
        curve.add_knot(anywhere(), anywhere(), anywhere());
    return curve;
}

void make_tables(benchmark::State& state)
{
    const Squidge curve = make_curve();
    for (auto _ : state) {
        const Squidge copy(curve);
        benchmark::DoNotOptimize(copy.calc_length());
    }
}

/// From the start on to a place a step further each time.
void walk_along_100_spans(benchmark::State& state)
{
    const Squidge curve = make_curve();
    const double step = curve.calc_length() / QUERIES;
    const CurvePosition start = curve.inq_first_knot()->inq_curve_position();
    int i = 0;
    for (auto _ : state) {
        const CurvePosition place = curve.find_position_along(start, 1, step * (i++ % QUERIES));
        benchmark::DoNotOptimize(place.knot->calc_at_param(place.parameter));
    }
}

/// Which way, how far, and a share of that: what an in-between asks of its curve.
void go_between_beads(benchmark::State& state)
{
    Squidge curve = make_curve();
    const auto& knots = curve.inq_knots();
    const Bead* from = curve.add_bead({knots[10].get(), 0.3}, 1);
    const Bead* to = curve.add_bead({knots[90].get(), 0.6}, 2);
    int i = 0;
    for (auto _ : state) {
        const int direction = curve.direction_to_go(from, to);
        const double way = curve.distance_along_curve(from, to, direction);
        const CurvePosition place = curve.find_position_along(from->inq_curve_position(), direction,
                                                              way * (i++ % QUERIES) / QUERIES);
        benchmark::DoNotOptimize(place.knot->calc_at_param(place.parameter));
    }
}

void ease_by_control_points(benchmark::State& state)
{
    Fairing fairing(QUERIES - 1);
    fairing.create_empty_cps(static_cast<int>(state.range(0)));
    const double last = static_cast<double>(state.range(0) - 1);
    for (int i = 0; i <= static_cast<int>(last); ++i)
        *fairing.inq_control_point(i) = {
            {i / last, i / last}, {-0.4 / last, 0.0}, {0.4 / last, 0.0}};
    int i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(fairing.get_height(i++ % QUERIES));
}

BENCHMARK(make_tables)->Unit(benchmark::kMicrosecond);
BENCHMARK(walk_along_100_spans);
BENCHMARK(go_between_beads);
BENCHMARK(ease_by_control_points)->Arg(2)->Arg(100);
} // namespace
