#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "kivlib/hdr/KIVStringList.h"
#include "render/hdr/OutputRun.h"
#include "render/src/HeldFrame.h"
#include "tests/layer_stacks/Stack.h"

#include <benchmark/benchmark.h>

// A frame of 1920 by 1080: a card alone, with layers under it, and the layers without the card;
// layers that nobody sees; and one that is held.

namespace {
constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1080;

/// A frame is drawn when somebody looks at it.
void draw(const Stack& stack)
{
    benchmark::DoNotOptimize(stack.render(WIDTH, HEIGHT)->inq_data());
}

void render(benchmark::State& state, bool has_card)
{
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
        draw(stack);
}

void card_over_layers(benchmark::State& state)
{
    render(state, true);
}

void layers(benchmark::State& state)
{
    render(state, false);
}

enum Unseen { CULLED, EMPTY, OUTSIDE };

void put_outside(Stack& stack, const KIVString& file)
{
    constexpr double FAR_AWAY = 10'000.0;
    auto* place = stack.put(new CNodeTransform, stack.output);
    set_key(place->inq_pos_subcolumn()->find_sub_column(MoveColumn::XPOS_SUBCOL), 1, {FAR_AWAY});
    stack.put_picture(place, file);
}

/// `per_layer` is the time of the frame, divided among its layers.
void unseen_layers(benchmark::State& state)
{
    const TempFolder cels;
    const KIVString file = cels.path("cel.tif");
    write_cel(file, 720, 405, 0);
    Stack stack;
    if (state.range(0) == CULLED)
        stack.put_card(stack.output, KIVColour(0.2, 0.6, 0.3));
    for (int i = 0; i < state.range(1); ++i) {
        if (state.range(0) == OUTSIDE)
            put_outside(stack, file);
        else if (state.range(0) == EMPTY)
            stack.put(new CNodeRasterImage(KIVStringSet(), nullptr), stack.output);
        else
            stack.put_picture(stack.output, file);
    }
    for (auto _ : state)
        draw(stack);
    state.counters["per_layer"] = benchmark::Counter(static_cast<double>(state.range(1)),
                                                     benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
}

/// Eleven cels over a background, all drawn a while ago.
class HeldCels {
public:
    explicit HeldCels(Stack::Path path = Stack::Path::DIRECT) : stack(path)
    {
        constexpr int CELS = 12;
        for (int i = 0; i < CELS; ++i) {
            const KIVString file = folder.path(std::to_string(i) + ".tif");
            write_cel(file, WIDTH, HEIGHT, i + 1 < CELS ? 1 : 0);
            make_old(file);
            stack.put_picture(stack.output, file);
        }
        stack.scene->inq_xsheet()->set_length(2);
    }

    static void make_old(const KIVString& file)
    {
        std::filesystem::last_write_time(file.str(), std::filesystem::file_time_type::clock::now() -
                                                         std::chrono::hours(1));
    }

    TempFolder folder;
    Stack stack;
};

void drawn_frame(benchmark::State& state)
{
    const HeldCels cels;
    for (auto _ : state)
        draw(cels.stack);
}

/// Every cel makes a picture of its own.
void merged_frame(benchmark::State& state)
{
    const HeldCels cels(Stack::Path::MERGING);
    for (auto _ : state)
        draw(cels.stack);
}

/// All that is done for the second of two equal frames, but for the copy of the file.
void held_frame(benchmark::State& state)
{
    const HeldCels cels;
    RenderScene renderer(cels.stack.scene.get(), WIDTH, HEIGHT, 1.0, 0, 0, 8, 0);
    HeldFrame held(*cels.stack.scene, renderer, 8, false);
    FrameReport report;
    report.frame = 1;
    report.file = cels.folder.path("0.tif");
    held.will_render(1);
    held.was_written(report);
    for (auto _ : state) {
        held.will_render(2);
        if (!held.open_file_for(2).is_open())
            state.SkipWithError("it would be drawn");
        held.was_written(report);
    }
}
} // namespace

BENCHMARK(card_over_layers)->Arg(0)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(layers)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(unseen_layers)
    ->ArgNames({"why", "layers"})
    ->ArgsProduct({{CULLED, EMPTY, OUTSIDE}, {100, 1000}})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(drawn_frame)->Unit(benchmark::kMicrosecond);
BENCHMARK(merged_frame)->Unit(benchmark::kMicrosecond);
BENCHMARK(held_frame)->Unit(benchmark::kMicrosecond);
