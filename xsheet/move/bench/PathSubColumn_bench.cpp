#include "curveslib/hdr/SquidgeSet.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/move/hdr/PathSubColumn.h"

#include <benchmark/benchmark.h>
#include <random>

namespace {
constexpr int SPANS = 100;
constexpr int FRAMES = 10000;

/// A move from one end of a long curve to the other.
std::unique_ptr<PathSubColumn> make_walk()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-100.0, 100.0);
    const auto anywhere = [&] { return Vector2(number(random), number(random)); };
    auto* set = new SquidgeSet;
    Squidge* curve = set->add_squidge(new Squidge(false));
    for (int i = 0; i <= SPANS; ++i)
        curve->add_knot(anywhere(), anywhere(), anywhere());
    curve->add_bead({curve->inq_first_knot(), 0.0}, 1);
    curve->add_bead({curve->inq_knots().back().get(), 0.0}, 2);
    auto walk = std::make_unique<PathSubColumn>();
    walk->inq_path_policy()->set_squidges(set);
    for (const unsigned long bead : {1, 2}) {
        auto* key = static_cast<PathKeyCell*>(walk->create_new_key());
        key->set_data(key->create_data());
        key->set_bead_label(bead);
        walk->insert_key(key, bead == 1 ? 1 : FRAMES);
        key->key_changed();
    }
    return walk;
}

/// Every frame for the first time.
void walk_along_a_path(benchmark::State& state)
{
    const auto walk = make_walk();
    for (auto _ : state) {
        walk->clear_all_inbetweens();
        for (int frame = 1; frame <= FRAMES; ++frame)
            benchmark::DoNotOptimize(walk->inq_element(0, frame));
    }
    state.counters["frames"] = benchmark::Counter(static_cast<double>(state.iterations()) * FRAMES,
                                                  benchmark::Counter::kIsRate);
}

BENCHMARK(walk_along_a_path)->Unit(benchmark::kMillisecond);
} // namespace
