#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "kivlib/hdr/AbortPanel.h"
#include "tests/support/OldRecord.h"
#include "xsheet/column/hdr/XSheet.h"

#include <benchmark/benchmark.h>

namespace {
/// Layers of a card under two transforms each, with their sheet.
class Layers {
public:
    explicit Layers(int n_ops)
        : sheet(std::make_unique<XSheet>(nullptr)), graph(std::make_unique<CNodeGraph>(sheet.get()))
    {
        CNode* output = add(new CNodeRostrum);
        graph->set_root_node(output);
        for (int i = 1; i < n_ops; i += 3) {
            CNode* outer = add(new CNodeTransform);
            CNode* inner = add(new CNodeTransform);
            connect(outer, output);
            connect(inner, outer);
            connect(add(new CNodeScreen), inner);
        }
    }

    /// As they come from a file.
    static Layers stored_and_loaded(Layers made)
    {
        auto sheet = stored_and_read(*made.sheet);
        made.graph = stored_and_read(*made.graph);
        made.sheet = std::move(sheet);
        made.sheet->load_finished_with_abort(nullptr);
        made.graph->load_finished_with_abort(made.sheet.get(), false);
        return made;
    }

    CNode* inq_output() const { return graph->inq_root_node(); }

private:
    CNode* add(CNode* node)
    {
        node->init();
        node->add_to_graph(graph.get());
        return node;
    }

    static void connect(CNode* from, CNode* to)
    {
        CNodeChannel* out = from->inq_outputs()->inq_channel(0);
        CNodeChannel* in = to->inq_inputs()->inq_channel(0);
        auto* connection = new CNodeConnection(out, in);
        out->add_connection(connection, -1);
        in->add_connection(connection, -1);
    }

    std::unique_ptr<XSheet> sheet;
    std::unique_ptr<CNodeGraph> graph; // goes before its sheet
};

/// Stops a run between its immediate and its generated phase, before any picture is made.
class StopBeforePictures : public AbortPanel {
public:
    explicit StopBeforePictures(int n_ops) : calls_left(n_ops + 1) {}
    bool inq_abort() override { return calls_left-- <= 0; }

private:
    int calls_left; // one before the first op, and one before each
};

void evaluate(GraphExec& exec, AbortPanel* panel)
{
    auto* image = static_cast<CDataImage*>(exec.inq_root_data());
    constexpr bool COLOUR = false; // no pixels
    image->set_request_data(1, COLOUR, false, 0, Matrix44(), IntBBox(IntRect(9, 0, 0, 9)));
    exec.setup_data();
    exec.generate_data(panel);
}

void per_op(benchmark::State& state)
{
    state.counters["per_op"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                  benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}

void build(benchmark::State& state, const Layers& layers)
{
    for (auto _ : state) {
        const GraphExec exec(CDataImage::inq_type_s(), layers.inq_output(), 0);
        benchmark::DoNotOptimize(exec.inq_root_data());
    }
    per_op(state);
}

void run(benchmark::State& state, const Layers& layers)
{
    GraphExec exec(CDataImage::inq_type_s(), layers.inq_output(), 0);
    for (auto _ : state)
        evaluate(exec, nullptr);
    per_op(state);
}

/// The request and the immediate phase alone.
void ask(benchmark::State& state, const Layers& layers)
{
    GraphExec exec(CDataImage::inq_type_s(), layers.inq_output(), 0);
    for (auto _ : state) {
        StopBeforePictures panel(static_cast<int>(state.range(0)));
        evaluate(exec, &panel);
    }
    per_op(state);
}

Layers made(const benchmark::State& state)
{
    return Layers(static_cast<int>(state.range(0)));
}

void build_image_ops(benchmark::State& state)
{
    build(state, made(state));
}

void evaluate_image_ops(benchmark::State& state)
{
    run(state, made(state));
}

void ask_image_ops(benchmark::State& state)
{
    ask(state, made(state));
}

void ask_loaded_image_ops(benchmark::State& state)
{
    ask(state, Layers::stored_and_loaded(made(state)));
}

void build_loaded_image_ops(benchmark::State& state)
{
    build(state, Layers::stored_and_loaded(made(state)));
}

void evaluate_loaded_image_ops(benchmark::State& state)
{
    run(state, Layers::stored_and_loaded(made(state)));
}
} // namespace

BENCHMARK(build_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(evaluate_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(ask_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(ask_loaded_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(build_loaded_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(evaluate_loaded_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
