#include "tests/layer_stacks/Stack.h"

#include <benchmark/benchmark.h>

// A frame of 1920 by 1080: a card alone, with layers under it, and the layers without the card.

namespace {
void render(benchmark::State& state, bool has_card)
{
    constexpr int WIDTH = 1920;
    constexpr int HEIGHT = 1080;
    const TempFolder cels;
    Stack stack;
    if (has_card)
        stack.put_card(stack.output, KIVColour(0.2, 0.6, 0.3));
    for (int i = 0; i < state.range(0); ++i) {
        const KIVString file = cels.path(std::to_string(i) + ".tif");
        write_cel(file, 720, 405, i);
        stack.put_picture(stack.output, file);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(stack.render(WIDTH, HEIGHT));
}

void card_over_layers(benchmark::State& state)
{
    render(state, true);
}

void layers(benchmark::State& state)
{
    render(state, false);
}
} // namespace

BENCHMARK(card_over_layers)->Arg(0)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(layers)->Arg(50)->Unit(benchmark::kMillisecond);
