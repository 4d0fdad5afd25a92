#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "xsheet/column/hdr/XSheet.h"

#include <benchmark/benchmark.h>

namespace {
/// Layers of a card under two transforms each.
class LayeredGraph {
public:
    explicit LayeredGraph(int n_ops)
    {
        for (int i = 1; i < n_ops; i += 3) {
            CNode* outer = add(new CNodeTransform);
            CNode* inner = add(new CNodeTransform);
            connect(outer, output);
            connect(inner, outer);
            connect(add(new CNodeScreen), inner);
        }
    }

    void evaluate(GraphExec& exec) const
    {
        auto* image = static_cast<CDataImage*>(exec.inq_root_data());
        constexpr bool COLOUR = false; // no pixels
        image->set_request_data(1, COLOUR, false, 0, Matrix44(), IntBBox(IntRect(9, 0, 0, 9)));
        exec.setup_data();
        exec.generate_data(nullptr);
    }

    XSheet sheet{nullptr};
    CNodeGraph graph{&sheet};
    CNode* output = add(new CNodeRostrum);

private:
    CNode* add(CNode* node)
    {
        node->init();
        node->add_to_graph(&graph);
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
};

void per_op(benchmark::State& state)
{
    state.counters["per_op"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                  benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}

void build_image_ops(benchmark::State& state)
{
    const LayeredGraph layers(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const GraphExec exec(CDataImage::inq_type_s(), layers.output, 0);
        benchmark::DoNotOptimize(exec.inq_root_data());
    }
    per_op(state);
}

void evaluate_image_ops(benchmark::State& state)
{
    const LayeredGraph layers(static_cast<int>(state.range(0)));
    GraphExec exec(CDataImage::inq_type_s(), layers.output, 0);
    for (auto _ : state)
        layers.evaluate(exec);
    per_op(state);
}
} // namespace

BENCHMARK(build_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(evaluate_image_ops)->Arg(100)->Arg(1000)->Arg(10000);
