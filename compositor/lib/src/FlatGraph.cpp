#include "compositor/lib/src/FlatGraph.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/DAGOpNode.h"

#include <bit>

int inq_n_mirrored_inputs(CNode& node)
{
    const CNodeDescriptor* descriptor = node.inq_desc();
    return descriptor && descriptor->inq_n_inputs() > 0 ? node.inq_n_input_channels() : 0;
}

int inq_n_mirrored_outputs(CNode& node)
{
    const CNodeDescriptor* descriptor = node.inq_desc();
    return descriptor && descriptor->inq_n_outputs() > 0 ? node.inq_n_output_channels() : 0;
}

FlatGraph::FlatGraph(CNodeGraph* graph)
{
    if (!graph)
        return;
    const KIVLinkedList& list = *graph->inq_nodes_list();
    nodes.reserve(static_cast<std::size_t>(list.count()));
    order.reserve(nodes.capacity());
    for (CNode* node : list.of<CNode>())
        if (node)
            add_node(node);
    make_map();
    for (const int number : order)
        connect_outputs(number);
}

void FlatGraph::add_node(CNode* real)
{
    order.push_back(inq_n_nodes());
    nodes.push_back(
        {real, n_inputs, inq_n_mirrored_inputs(*real), n_outputs, inq_n_mirrored_outputs(*real)});
    n_inputs += nodes.back().n_inputs;
    n_outputs += nodes.back().n_outputs;
}

void FlatGraph::connect_outputs(int number)
{
    const Node& node = inq_node(number);
    for (int i = 0; i < node.n_outputs; ++i) {
        CNodeChannel* channel = node.real->inq_outputs()->inq_channel(i);
        for (const auto* made : channel->inq_connections_list()->of<CNodeConnection>()) {
            Connection ends{number, node.first_output + i, -1, -1};
            if (find_input(made->inq_input_channel(), ends))
                connections.push_back(ends);
        }
    }
}

/// The map is at most half full, and a node stands at the first free place from its hash on.
void FlatGraph::make_map()
{
    map_bits = static_cast<int>(std::bit_width(2 * nodes.size() + 1));
    map.assign(std::size_t{1} << map_bits, Place{});
    for (const int number : order)
        map[find_place(inq_node(number).real)] = {inq_node(number).real, number};
}

std::size_t FlatGraph::find_place(const CNode* real) const
{
    constexpr std::uint64_t golden_ratio = 0x9E3779B97F4A7C15U;
    constexpr int n_bits = 64;
    std::size_t place =
        (reinterpret_cast<std::uintptr_t>(real) * golden_ratio) >> (n_bits - map_bits);
    while (map[place].real && map[place].real != real)
        place = (place + 1) & (map.size() - 1);
    return place;
}

int FlatGraph::find_number(const CNode* real) const
{
    return map.empty() ? -1 : map[find_place(real)].number;
}

bool FlatGraph::find_output(CNodeChannel* channel, Connection& ends) const
{
    ends.from_node = channel ? find_number(channel->inq_node()) : -1;
    if (ends.from_node < 0)
        return false;
    const Node& node = inq_node(ends.from_node);
    const int index = channel->find_channel_index();
    ends.output = node.first_output + index;
    return 0 <= index && index < node.n_outputs;
}

bool FlatGraph::find_input(CNodeChannel* channel, Connection& ends) const
{
    ends.to_node = channel ? find_number(channel->inq_node()) : -1;
    if (ends.to_node < 0)
        return false;
    const Node& node = inq_node(ends.to_node);
    const int index = channel->find_channel_index();
    ends.input = node.first_input + index;
    return 0 <= index && index < node.n_inputs;
}

void FlatGraph::make_connection(CNodeChannel* output, CNodeChannel* input)
{
    Connection ends{};
    if (!find_output(output, ends) || !find_input(input, ends))
        return;
    connections.push_back(ends);
    first_feed.clear();
}

void FlatGraph::delete_connection(CNodeConnection* connection)
{
    Connection ends{};
    if (!find_output(connection->inq_output_channel(), ends) ||
        !find_input(connection->inq_input_channel(), ends))
        return;
    const auto last =
        std::find_if(connections.rbegin(), connections.rend(), [&](const Connection& made) {
            return made.output == ends.output && made.input == ends.input;
        });
    if (last == connections.rend())
        return;
    connections.erase(std::next(last).base());
    first_feed.clear();
}

/// A counting sort of the connections by input channel; it keeps their order on each.
void FlatGraph::gather_feeds()
{
    if (!first_feed.empty())
        return;
    first_feed.assign(static_cast<std::size_t>(n_inputs) + 1, 0);
    for (const Connection& made : connections)
        ++first_feed[static_cast<std::size_t>(made.input) + 1];
    for (std::size_t i = 1; i < first_feed.size(); ++i)
        first_feed[i] += first_feed[i - 1];
    feeds.resize(connections.size());
    std::vector<int> place = first_feed;
    for (const Connection& made : connections)
        feeds[static_cast<std::size_t>(place[static_cast<std::size_t>(made.input)]++)] = made;
}

std::span<const FlatGraph::Connection> FlatGraph::inq_feeds(int input) const
{
    const int* first = &first_feed[static_cast<std::size_t>(input)];
    return {feeds.data() + first[0], feeds.data() + first[1]};
}

std::span<const cdata_tDArray* const> FlatGraph::inq_input_types(int number) const
{
    const Node& node = inq_node(number);
    if (input_types.empty())
        return {};
    return {input_types.data() + node.first_input, static_cast<std::size_t>(node.n_inputs)};
}

std::span<const cdata_tDArray* const> FlatGraph::inq_output_types(int number) const
{
    const Node& node = inq_node(number);
    if (output_types.empty())
        return {};
    return {output_types.data() + node.first_output, static_cast<std::size_t>(node.n_outputs)};
}

void FlatGraph::set_found(std::vector<const cdata_tDArray*> inputs,
                          std::vector<const cdata_tDArray*> outputs)
{
    input_types = std::move(inputs);
    output_types = std::move(outputs);
}

std::span<const FlatGraph::Connection> FlatGraph::inq_feeds_of(const Node& node) const
{
    const int* first = &first_feed[static_cast<std::size_t>(node.first_input)];
    return {feeds.data() + first[0], feeds.data() + first[node.n_inputs]};
}

/// A walk that goes from each node to what feeds it and leaves the nodes behind it in order.
class FlatGraph::Sorting {
public:
    explicit Sorting(const FlatGraph& graph)
        : graph(graph), colours(graph.nodes.size(), DAGOpNode::UNVISITED)
    {
        sorted.reserve(graph.nodes.size());
    }

    /// False if it met a cycle.
    bool visit_from(int start)
    {
        if (colour(start) == DAGOpNode::UNVISITED)
            enter(start);
        while (!path.empty())
            if (!step())
                return false;
        return true;
    }

    std::vector<int> sorted;

private:
    struct Visit {
        int number;
        std::span<const Connection> feeds_left;
    };

    char& colour(int number) { return colours[static_cast<std::size_t>(number)]; }

    void enter(int number)
    {
        colour(number) = DAGOpNode::ON_PATH;
        path.push_back({number, graph.inq_feeds_of(graph.inq_node(number))});
    }

    void leave(int number)
    {
        colour(number) = DAGOpNode::FINISHED;
        sorted.push_back(number);
        path.pop_back();
    }

    bool step()
    {
        Visit& now = path.back();
        if (now.feeds_left.empty()) {
            leave(now.number);
            return true;
        }
        const int feeder = now.feeds_left.front().from_node;
        now.feeds_left = now.feeds_left.subspan(1);
        if (colour(feeder) == DAGOpNode::ON_PATH)
            return false;
        if (colour(feeder) == DAGOpNode::UNVISITED)
            enter(feeder);
        return true;
    }

    const FlatGraph& graph;
    std::vector<char> colours;
    std::vector<Visit> path;
};

bool FlatGraph::sort()
{
    gather_feeds();
    Sorting sorting(*this);
    for (const int number : order)
        if (!sorting.visit_from(number))
            return false;
    order = std::move(sorting.sorted);
    return true;
}
