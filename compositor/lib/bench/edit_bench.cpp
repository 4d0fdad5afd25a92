#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/DataType.h"

#include <benchmark/benchmark.h>
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/topological_sort.hpp>
#include <random>

// Checked edits of a graph, beside what the Boost Graph Library takes to copy, sort and type the
// same graph: the way to ask whether one more connection may be.

namespace {
constexpr int LINE = 811;
constexpr int NOISE = 812;

class EditNode : public CNode {
public:
    explicit EditNode(CNodeDescriptor* descriptor) : descriptor(descriptor) { init(); }
    ClassDescriptor* inq_class_descriptor() const override { return descriptor; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return "edited"; }
    bool inq_is_universal() const override { return descriptor->inq_input_type(0) < LINE; }
    gsl::owner<CNodeOp*> new_nodeop(int) override { return nullptr; }

    CNodeChannel* input(int i) const { return inq_inputs()->inq_channel(i); }
    CNodeChannel* output() const { return inq_outputs()->inq_channel(0); }

private:
    CNodeDescriptor* descriptor;
};

CNodeDescriptor* descriptor_of(int type)
{
    const auto make = [](const char* name, int of_type) {
        return new CNodeDescriptor(name, "CNode", nullptr, -1, nullptr, name, 0, true, 2, 1,
                                   of_type, nullptr);
    };
    static auto* const line = make("EditLine", LINE);
    static auto* const noise = make("EditNoise", NOISE);
    static auto* const universal = make("EditUniversal", WILDCARD_TYPE);
    return type == LINE ? line : type == NOISE ? noise : universal;
}

void register_types()
{
    if (CDataDescriptor::find_desc_for(LINE))
        return;
    new CDataDescriptor("EditLineData", "Line", LINE, nullptr, true, nullptr, true);
    new CDataDescriptor("EditNoiseData", "Noise", NOISE, nullptr, false, nullptr, true);
}

/// Ordinary and universal nodes by turns, whose two inputs read any of the nodes before.
class EditedGraph {
public:
    explicit EditedGraph(int n) : graph(nullptr)
    {
        register_types();
        graph.set_type_checker_disabled();
        for (int i = 0; i < n; ++i) {
            nodes.push_back(new EditNode(descriptor_of(i % 2 ? WILDCARD_TYPE : LINE)));
            graph.add_node(nodes.back());
        }
        graph.set_root_node(nodes.back());
    }

    /// So many of them, from the first node that has any before it on.
    void connect(int n_connections)
    {
        for (int i = 0; i < n_connections; ++i) {
            const int to = 1 + i / 2 % (static_cast<int>(nodes.size()) - 1);
            connect_to(to, i % 2);
        }
    }

    CNodeConnection* connect_to(int to, int input)
    {
        return graph.make_connection(node(below(to))->output(), node(to)->input(input), false);
    }

    int below(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
    EditNode* node(int i) const { return nodes[static_cast<std::size_t>(i)]; }
    int inq_n_nodes() const { return static_cast<int>(nodes.size()); }

    CNodeGraph graph;

private:
    std::vector<EditNode*> nodes;
    std::mt19937 random{7};
};

void per_edit(benchmark::State& state, double edits)
{
    state.counters["per_edit"] = benchmark::Counter(
        edits, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// A connection goes, and the input gets another one.
void checked_edits(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    EditedGraph edited(n);
    edited.connect(2 * (n - 1));
    edited.graph.set_type_checker_enabled();
    for (auto _ : state) {
        const int to = 1 + edited.below(n - 1);
        const int input = edited.below(2);
        edited.graph.delete_connection(edited.node(to)->input(input)->find_connection_at(0), false);
        if (!edited.connect_to(to, input))
            state.SkipWithError("refused");
    }
    per_edit(state, 2);
}

/// Connections that do not fit, in the midst of the graph.
void refused_edits(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    EditedGraph edited(n);
    edited.connect(2 * (n - 1));
    auto* noise = new EditNode(descriptor_of(NOISE));
    edited.graph.add_node(noise);
    edited.graph.set_type_checker_enabled();
    for (auto _ : state)
        if (edited.graph.make_connection(noise->output(),
                                         edited.node(1 + edited.below(n - 1))->input(0), false))
            state.SkipWithError("made");
    per_edit(state, 1);
}

void build_and_check_once(benchmark::State& state)
{
    for (auto _ : state) {
        EditedGraph edited(static_cast<int>(state.range(0)));
        edited.connect(static_cast<int>(state.range(1)));
        if (!edited.graph.set_type_checker_enabled())
            state.SkipWithError("failed");
    }
}

/// With the checker on, from the first source to the last consumer or the other way.
template <bool DOWNWARDS> void grow_chain(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        EditedGraph edited(n);
        edited.graph.set_type_checker_enabled();
        for (int i = 1; i < n; ++i) {
            const int to = DOWNWARDS ? i : n - i;
            edited.graph.make_connection(edited.node(to - 1)->output(), edited.node(to)->input(0),
                                         false);
        }
    }
}

/// Unchecked, from the last consumer to the first source: every input, and half of the second ones.
void build_from_root(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        EditedGraph edited(n);
        for (int to = n - 1; to > 0; --to) {
            edited.graph.make_connection(edited.node(to - 1)->output(), edited.node(to)->input(0),
                                         false);
            if (to % 2 == 0)
                edited.connect_to(to, 1);
        }
    }
}

struct BoostNode {
    bool is_universal = false;
    std::uint64_t types = 0; // as bits
};
using BoostGraph =
    boost::adjacency_list<boost::vecS, boost::vecS, boost::bidirectionalS, BoostNode>;

constexpr std::uint64_t LINE_BIT = 1;

BoostGraph draw_boost_graph(int n)
{
    std::mt19937 random(7);
    BoostGraph graph(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        graph[static_cast<std::size_t>(i)].is_universal = i % 2;
    for (int i = 0; i < 2 * (n - 1); ++i) {
        const unsigned to = 1 + static_cast<unsigned>(i / 2 % (n - 1));
        boost::add_edge(random() % to, to, graph);
    }
    return graph;
}

bool type_boost_node(BoostGraph& graph, std::size_t node)
{
    std::uint64_t types = ~std::uint64_t{0};
    for (const auto& edge : boost::make_iterator_range(boost::in_edges(node, graph)))
        types &= graph[boost::source(edge, graph)].types;
    if (!graph[node].is_universal && !(types & LINE_BIT))
        return false;
    graph[node].types = graph[node].is_universal ? types : LINE_BIT;
    return types != 0;
}

void boost_copy_sort_type(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const BoostGraph graph = draw_boost_graph(n);
    std::mt19937 random(8);
    for (auto _ : state) {
        BoostGraph copy(graph);
        const unsigned to = 1 + static_cast<unsigned>(random() % static_cast<unsigned>(n - 1));
        boost::add_edge(random() % to, to, copy);
        std::vector<std::size_t> order;
        order.reserve(static_cast<std::size_t>(n));
        boost::topological_sort(copy, std::back_inserter(order));
        bool fits = true;
        for (auto node = order.rbegin(); fits && node != order.rend(); ++node)
            fits = type_boost_node(copy, *node);
        benchmark::DoNotOptimize(fits);
    }
    per_edit(state, 1);
}
} // namespace

BENCHMARK(checked_edits)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(refused_edits)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(boost_copy_sort_type)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(build_and_check_once)->Args({10000, 15000})->Unit(benchmark::kMillisecond);
BENCHMARK(grow_chain<true>)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(grow_chain<false>)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(build_from_root)->Arg(10000)->Unit(benchmark::kMillisecond);
