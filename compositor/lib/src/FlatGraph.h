#pragma once

#include "compositor/lib/hdr/cdata_tDArray.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

class CNode;
class CNodeChannel;
class CNodeConnection;
class CNodeGraph;

/// The channels that a mirror gives a node: none where the node's class declares none.
int inq_n_mirrored_inputs(CNode& node);
int inq_n_mirrored_outputs(CNode& node);

/// A node graph as plain arrays: its nodes, and who feeds whom. Input channels are numbered through
/// all nodes, and so are output channels.
class FlatGraph {
public:
    struct Node {
        CNode* real;
        int first_input;
        int n_inputs;
        int first_output;
        int n_outputs;
    };
    struct Connection {
        int from_node;
        int output;
        int to_node;
        int input;
    };

    explicit FlatGraph(CNodeGraph* graph);

    /// Nothing happens if a channel is not of this graph.
    void make_connection(CNodeChannel* output, CNodeChannel* input);

    /// Takes out the last connection between the same channels.
    void delete_connection(CNodeConnection* connection);

    /// Puts what feeds a node before the node. False if there is a cycle; then the order stays.
    bool sort();

    /// The nodes by number, in the order of the graph or, once sorted, inputs first.
    const std::vector<int>& inq_order() const { return order; }
    const Node& inq_node(int number) const { return nodes[static_cast<std::size_t>(number)]; }
    int inq_n_nodes() const { return static_cast<int>(nodes.size()); }
    int inq_n_inputs() const { return n_inputs; }
    int inq_n_outputs() const { return n_outputs; }

    /// In the order in which they were made.
    const std::vector<Connection>& inq_connections() const { return connections; }

    /// Puts the connections of each input together, if some were made or deleted since.
    void gather_feeds();

    /// What feeds an input channel, as it was gathered.
    std::span<const Connection> inq_feeds(int input) const;

    /// What a check has found at the channels of a node: null where nothing constrains one. Empty
    /// before a check.
    std::span<const cdata_tDArray* const> inq_input_types(int number) const;
    std::span<const cdata_tDArray* const> inq_output_types(int number) const;

    /// By channel. The check keeps what they point at.
    void set_found(std::vector<const cdata_tDArray*> inputs,
                   std::vector<const cdata_tDArray*> outputs);

private:
    class Sorting;
    struct Place {
        const CNode* real = nullptr; // null where the place is free
        int number = -1;
    };

    void add_node(CNode* real);
    void connect_outputs(int number);
    int find_number(const CNode* real) const;
    bool find_output(CNodeChannel* channel, Connection& ends) const;
    bool find_input(CNodeChannel* channel, Connection& ends) const;
    std::size_t find_place(const CNode* real) const;
    void make_map();
    std::span<const Connection> inq_feeds_of(const Node& node) const;

    std::vector<Node> nodes;
    std::vector<int> order;
    std::vector<Connection> connections;
    std::vector<Connection> feeds; // by input channel
    std::vector<int> first_feed;   // of each input channel, and one more; empty until gathered
    std::vector<Place> map;        // by hash
    int map_bits = 0;
    int n_inputs = 0;
    int n_outputs = 0;
    std::vector<const cdata_tDArray*> input_types;  // not owned
    std::vector<const cdata_tDArray*> output_types; // not owned
};
