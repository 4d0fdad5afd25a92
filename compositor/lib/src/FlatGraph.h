#pragma once

#include <cstddef>
#include <vector>

class CNode;
class CNodeChannel;
class CNodeGraph;

/// The channels that a mirror gives a node: none where the node's class declares none.
int inq_n_mirrored_inputs(const CNode& node);
int inq_n_mirrored_outputs(const CNode& node);

/// A node graph as plain arrays: its nodes, and who feeds whom. Nodes are numbered in the graph's
/// order, input channels through all nodes, and so are output channels.
class FlatGraph {
public:
    static constexpr int NONE = -1;

    struct Node {
        CNode* real;
        int first_input;
        int n_inputs;
        int first_output;
        int n_outputs;
    };

    /// Each stands in two rings of links: those of its input and those of its output.
    struct Connection {
        int output;
        int input;
        int previous_feed;
        int next_feed;
        int previous_reader;
        int next_reader;
    };

    /// Where on its input channel a connection stands: among the others by the number of its
    /// output, or behind them.
    enum class Position { BY_OUTPUT, LAST };

    explicit FlatGraph(const CNodeGraph& graph);

    int inq_n_nodes() const { return static_cast<int>(nodes.size()); }
    int inq_n_inputs() const { return static_cast<int>(inputs.size()); }
    int inq_n_outputs() const { return static_cast<int>(outputs.size()); }
    const Node& inq_node(int number) const { return nodes[index(number)]; }
    int inq_node_of_input(int input) const { return inputs[index(input)].node; }
    int inq_node_of_output(int output) const { return outputs[index(output)].node; }

    /// `NONE` for a stranger, or for null.
    int find_node(const CNode* real) const { return places[find_place(real)].number; }
    int find_input(const CNodeChannel* channel) const;
    int find_output(const CNodeChannel* channel) const;

    /// `NONE` after the last.
    int inq_first_feed(int input) const { return inputs[index(input)].first; }
    int inq_first_reader(int output) const { return outputs[index(output)].first; }
    const Connection& inq_connection(int number) const { return connections[index(number)]; }

    /// A node without connections.
    void add_node(CNode* real);
    int connect(int output, int input, Position position);
    void disconnect(int connection);

    /// One between these channels, or `NONE`.
    int find_connection(int output, int input) const;

    /// Puts what feeds a node before the node: the nodes as a walk leaves them that takes them by
    /// their numbers and goes from each to its feeds first. False if there is a cycle; then the
    /// order stays.
    bool sort();

    /// Whether the feeds of each node are before the node.
    bool inq_is_in_order() const { return is_in_order; }

    /// After the connection is gone that the order did not suit.
    void return_to_order() { is_in_order = true; }
    int inq_place(int number) const { return place_in_order[index(number)]; }
    int inq_node_at(int place) const { return order[index(place)]; }

private:
    class Sorting;
    struct Ends {
        int node;
        int first = NONE;
        int last = NONE;
    };
    struct Place {
        const CNode* real = nullptr; // null where the place is free
        int number = NONE;
    };

    static std::size_t index(int number) { return static_cast<std::size_t>(number); }
    void connect_outputs(int number);
    std::size_t find_place(const CNode* real) const;
    void make_places(std::size_t n_nodes);
    int new_connection(int output, int input);

    std::vector<Node> nodes;
    std::vector<Ends> inputs;
    std::vector<Ends> outputs;
    std::vector<Connection> connections;
    std::vector<int> free_connections;
    std::vector<int> order;
    std::vector<int> place_in_order;
    bool is_in_order = true;
    std::vector<Place> places; // by hash
    int place_bits = 0;
};
