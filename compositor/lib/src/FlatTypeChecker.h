#pragma once

#include "compositor/lib/src/FlatGraph.h"
#include "compositor/lib/src/TypeSets.h"

#include <unordered_map>

class CNode;
class CNodeDescriptor;
class DAGExec;

/// Runs the pass "type_checker" over the flat form of a graph: what the operators of the pass do
/// node by node, without making them.
class FlatTypeChecker {
public:
    FlatTypeChecker(DAGExec& exec, FlatGraph& graph) : exec(exec), graph(graph) {}

    /// Over a sorted graph, until the pass has failed. What was found stays with the graph.
    void run();

private:
    using Set = TypeSets::Set; // null: nothing constrains
    using Feeds = std::span<const FlatGraph::Connection>;

    /// Which conversions widen a set before it is compared.
    enum class Conversions { NONE, ALL, TO_CONCRETE };

    bool check_channel(const FlatGraph::Node& node, int i);
    bool composite(const FlatGraph::Node& node, int i, Feeds feeds);
    bool check_node(const FlatGraph::Node& node);
    bool check_ordinary(const FlatGraph::Node& node);
    bool check_universal(const FlatGraph::Node& node, bool generic);
    Set pass_on(const FlatGraph::Node& node, bool generic);
    Set intersect(Feeds feeds, Conversions conversions);
    Set intersect_inputs(const FlatGraph::Node& node, Conversions conversions);
    Set converted(Set types, Conversions conversions);
    Set narrowed(Set types, Set by);
    Set all_types();
    Set generic_types(CNode& node);

    Set& input(const FlatGraph::Node& node, int i)
    {
        return inputs[static_cast<std::size_t>(node.first_input + i)];
    }
    Set& output(int number) { return outputs[static_cast<std::size_t>(number)]; }

    DAGExec& exec;
    FlatGraph& graph;
    TypeSets sets;
    std::vector<Set> inputs;
    std::vector<Set> outputs;
    Set every_type = nullptr;
    std::unordered_map<const CNodeDescriptor*, Set> generics;
};
