#pragma once

#include "compositor/lib/src/FlatGraph.h"
#include "compositor/lib/src/TypeSets.h"

#include <unordered_map>

class CNodeDescriptor;

/// What the pass "type_checker" finds over a graph, kept from check to check: only nodes that an
/// edit concerns are gone through again. The graph tells of every edit.
class FlatTypeChecker {
public:
    /// Whether a check leaves its lists of types on the nodes.
    enum class Lists { STORED, DROPPED };

    explicit FlatTypeChecker(const CNodeGraph& c_graph);

    /// Asks each node again what kind of node it is. False if the nodes' channels are no longer
    /// those of this checker, which is to be made anew then.
    bool ask_nodes();

    /// Whether the data types fit. True, and no list stored, if the graph has a cycle. A check that
    /// fails stores lists up to the first node that fails in the order of `FlatGraph::sort`.
    bool check(Lists lists);

    /// The same with one more connection, unless a channel is none of this graph.
    bool check_with(const CNodeChannel* output, const CNodeChannel* input, Lists lists);

    bool inq_knows(const CNode* node) const { return graph.find_node(node) != FlatGraph::NONE; }

    /// A node without connections.
    void add_node(CNode* node);
    void add_connection(const CNodeChannel* output, const CNodeChannel* input);
    void remove_connection(const CNodeChannel* output, const CNodeChannel* input);

private:
    using Set = TypeSets::Set; // null: nothing constrains
    using Node = FlatGraph::Node;

    enum class Kind : char { ORDINARY, UNIVERSAL, GENERIC };

    /// Which conversions widen a set before it is compared.
    enum class Conversions { NONE, ALL, TO_CONCRETE };

    struct State {
        const CNodeDescriptor* descriptor;
        Kind kind;
        bool is_waiting = false;  // for a check
        bool is_unlisted = false; // its list on the real node may be another
        Set types = nullptr;      // of a universal or generic node that was checked
    };

    static constexpr int NONE = FlatGraph::NONE;
    static std::size_t index(int number) { return static_cast<std::size_t>(number); }
    static Kind kind_of(const CNode& node);

    State& state(int number) { return states[index(number)]; }
    void take_node(int number);
    void wait_for_check(int number);
    void check_again(const CNodeChannel* channel);
    int find_first_failure();
    bool check_node(int number);
    bool check_inputs(int number, const Node& node);
    bool check_ordinary(int number, const Node& node);
    bool check_universal(int number, const Node& node);
    void set_output(int output, Set types);
    bool composite(int number, int input, Set& types);
    bool inq_takes_several(int number, int input);
    Set pass_on(int number, const Node& node);
    Set intersect_feeds(int input, Conversions conversions);
    Set intersect_inputs(const Node& node, Conversions conversions);
    Set converted(Set types, Conversions conversions);
    Set narrowed(Set types, Set by);
    Set all_types();
    Set generic_types(const CNodeDescriptor* descriptor);
    void unlist(int number);
    void unlist_if_others_set_lists();
    void store_lists(int end_place);

    FlatGraph graph;
    TypeSets sets;
    std::vector<State> states;
    std::vector<Set> inputs;
    std::vector<Set> outputs;
    int n_waiting = 0;
    int first_waiting = 0; // no node at an earlier place waits
    std::vector<int> unlisted;
    unsigned long seen_type_lists = 0;
    std::unordered_map<int, bool> takes_several; // inputs whose node was asked, and its answer
    Set every_type = nullptr;
    std::unordered_map<const CNodeDescriptor*, Set> generics;
};
