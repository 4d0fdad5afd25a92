#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/hdr/GraphExec.h"

#include <benchmark/benchmark.h>

namespace {
constexpr int DRAWING = 801;

/// Data without content, so that the engine's own time is left.
class PlainData : public CData {
public:
    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(DRAWING); }
    int inq_type() const override { return DRAWING; }
    int inq_frameno() const override { return frame; }

    using CData::union_generated_data_from;
    using CData::union_immediate_data_from;
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        extent += inputs->inq_n_nodes();
    }
    void union_generated_data_from(CNodeOpArray*, AbortPanel*) override {}
    void copy_request_data_from(CData* consumer) override
    {
        frame = static_cast<PlainData*>(consumer)->frame;
    }
    void copy_immediate_data_to(CData* consumer) override
    {
        static_cast<PlainData*>(consumer)->extent = extent + 1;
    }
    void clear_immediate_data() override { extent = 0; }

    int frame = 1;
    int extent = 0;
};

class PlainNode : public CNode {
public:
    PlainNode(CNodeDescriptor* descriptor, bool universal)
        : descriptor(descriptor), universal(universal)
    {
        init();
    }
    ClassDescriptor* inq_class_descriptor() const override { return descriptor; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return "plain"; }
    bool inq_is_universal() const override { return universal; }
    gsl::owner<CNodeOp*> new_nodeop(int) override { return new CNodeOp(this); }

private:
    CNodeDescriptor* descriptor;
    bool universal;
};

/// Ordinary and universal nodes by turns, in a chain or all into one.
class PlainGraph {
public:
    enum Shape { CHAIN, WIDE };

    PlainGraph(Shape shape, int n) : graph(nullptr)
    {
        static const auto* const data = new CDataDescriptor(
            "Plain", "Plain", DRAWING, [] { return static_cast<CData*>(new PlainData); }, true,
            nullptr, true);
        benchmark::DoNotOptimize(data);
        root = add(DRAWING);
        for (CNode* consumer = root; n > 1; --n) {
            CNode* node = add(n % 2 ? DRAWING : WILDCARD_TYPE);
            connect(node, consumer);
            if (shape == CHAIN)
                consumer = node;
        }
    }

    CNode* add(int type)
    {
        static auto* const ordinary = new_descriptor("PlainOrdinary", DRAWING);
        static auto* const universal = new_descriptor("PlainUniversal", WILDCARD_TYPE);
        auto* node =
            type == DRAWING ? new PlainNode(ordinary, false) : new PlainNode(universal, true);
        graph.add_node(node);
        return node;
    }

    static void connect(CNode* from, CNode* to)
    {
        CNodeChannel* output = from->inq_outputs()->inq_channel(0);
        CNodeChannel* input = to->inq_inputs()->inq_channel(0);
        auto* connection = new CNodeConnection(output, input);
        output->add_connection(connection, -1);
        input->add_connection(connection, -1);
    }

    CNodeGraph graph;
    CNode* root;

private:
    static CNodeDescriptor* new_descriptor(const char* name, int type)
    {
        return new CNodeDescriptor(name, "CNode", nullptr, -1, nullptr, name, 0, true, 1, 1, type,
                                   nullptr);
    }
};

void per_node(benchmark::State& state)
{
    state.counters["per_node"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                    benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

template <PlainGraph::Shape SHAPE> void type_check(benchmark::State& state)
{
    PlainGraph plain(SHAPE, static_cast<int>(state.range(0)));
    CNode* proposed = plain.add(DRAWING);
    for (auto _ : state) {
        DAGExec exec(&plain.graph, "type_checker", new DAGOpBottomUpDefault);
        exec.inq_graph()->make_connection(proposed->inq_outputs()->inq_channel(0),
                                          plain.root->inq_inputs()->inq_channel(0));
        exec.init();
        exec.set_store_result(true);
        benchmark::DoNotOptimize(exec.execute());
    }
    per_node(state);
}

template <PlainGraph::Shape SHAPE> void build(benchmark::State& state)
{
    PlainGraph plain(SHAPE, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const GraphExec exec(DRAWING, plain.root, 0);
        benchmark::DoNotOptimize(exec.inq_root_data());
    }
    per_node(state);
}

template <PlainGraph::Shape SHAPE> void evaluate(benchmark::State& state)
{
    PlainGraph plain(SHAPE, static_cast<int>(state.range(0)));
    GraphExec exec(DRAWING, plain.root, 0);
    for (auto _ : state) {
        exec.setup_data();
        exec.generate_data(nullptr);
        benchmark::DoNotOptimize(exec.inq_root_data());
    }
    per_node(state);
}

constexpr PlainGraph::Shape CHAIN = PlainGraph::CHAIN;
constexpr PlainGraph::Shape WIDE = PlainGraph::WIDE;
} // namespace

BENCHMARK(type_check<CHAIN>)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000);
BENCHMARK(type_check<WIDE>)->Arg(1000)->Arg(50000);
BENCHMARK(build<CHAIN>)->Arg(1000)->Arg(50000);
BENCHMARK(build<WIDE>)->Arg(1000)->Arg(50000);
BENCHMARK(evaluate<CHAIN>)->Arg(100)->Arg(1000)->Arg(50000);
BENCHMARK(evaluate<WIDE>)->Arg(1000)->Arg(50000);
