#include "compositor/lib/src/FlatGraph.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/DAGOpNode.h"

#include <bit>
#include <cstdint>

int inq_n_mirrored_inputs(const CNode& node)
{
    const CNodeDescriptor* descriptor = node.inq_desc();
    return descriptor && descriptor->inq_n_inputs() > 0 ? node.inq_n_input_channels() : 0;
}

int inq_n_mirrored_outputs(const CNode& node)
{
    const CNodeDescriptor* descriptor = node.inq_desc();
    return descriptor && descriptor->inq_n_outputs() > 0 ? node.inq_n_output_channels() : 0;
}

FlatGraph::FlatGraph(const CNodeGraph& graph)
{
    const KIVLinkedList& list = *graph.inq_nodes_list();
    const auto n = static_cast<std::size_t>(list.count());
    nodes.reserve(n);
    order.reserve(n);
    place_in_order.reserve(n);
    make_places(n);
    for (CNode* node : list.of<CNode>())
        if (node)
            add_node(node);
    for (int number = 0; number < inq_n_nodes(); ++number)
        connect_outputs(number);
}

void FlatGraph::add_node(CNode* real)
{
    const int number = inq_n_nodes();
    if (2 * nodes.size() >= places.size())
        make_places(2 * nodes.size());
    if (Place& place = places[find_place(real)]; !place.real)
        place = {real, number};
    nodes.push_back({real, inq_n_inputs(), inq_n_mirrored_inputs(*real), inq_n_outputs(),
                     inq_n_mirrored_outputs(*real)});
    inputs.resize(inputs.size() + index(nodes.back().n_inputs), {number});
    outputs.resize(outputs.size() + index(nodes.back().n_outputs), {number});
    place_in_order.push_back(static_cast<int>(order.size()));
    order.push_back(number);
}

void FlatGraph::connect_outputs(int number)
{
    const Node node = inq_node(number);
    for (int i = 0; i < node.n_outputs; ++i) {
        const CNodeChannel& channel = *node.real->inq_outputs()->inq_channel(i);
        for (const auto* made : channel.inq_connections_list()->of<CNodeConnection>())
            if (const int input = find_input(made ? made->inq_input_channel() : nullptr);
                input != NONE)
                connect(node.first_output + i, input, Position::BY_OUTPUT);
    }
}

/// The table is at most half full, and a node stands at the first free place from its hash on.
void FlatGraph::make_places(std::size_t n_nodes)
{
    place_bits = static_cast<int>(std::bit_width(2 * n_nodes + 1));
    places.assign(std::size_t{1} << place_bits, Place{});
    for (int number = 0; number < inq_n_nodes(); ++number)
        if (Place& place = places[find_place(inq_node(number).real)]; !place.real)
            place = {inq_node(number).real, number};
}

/// Where the node stands, or would stand.
std::size_t FlatGraph::find_place(const CNode* real) const
{
    constexpr std::uint64_t golden_ratio = 0x9E3779B97F4A7C15U;
    constexpr int n_bits = 64;
    std::size_t place =
        (reinterpret_cast<std::uintptr_t>(real) * golden_ratio) >> (n_bits - place_bits);
    while (places[place].real && places[place].real != real)
        place = (place + 1) & (places.size() - 1);
    return place;
}

int FlatGraph::find_input(const CNodeChannel* channel) const
{
    const int number = find_node(channel ? channel->inq_node() : nullptr);
    const int i = number == NONE ? NONE : channel->find_channel_index();
    if (i < 0 || i >= inq_node(number).n_inputs)
        return NONE;
    return inq_node(number).first_input + i;
}

int FlatGraph::find_output(const CNodeChannel* channel) const
{
    const int number = find_node(channel ? channel->inq_node() : nullptr);
    const int i = number == NONE ? NONE : channel->find_channel_index();
    if (i < 0 || i >= inq_node(number).n_outputs)
        return NONE;
    return inq_node(number).first_output + i;
}

int FlatGraph::new_connection(int output, int input)
{
    const Connection made{output, input, NONE, NONE, NONE, outputs[index(output)].first};
    if (free_connections.empty()) {
        connections.push_back(made);
        return static_cast<int>(connections.size()) - 1;
    }
    const int number = free_connections.back();
    free_connections.pop_back();
    connections[index(number)] = made;
    return number;
}

/// Among the readers of an output the order means nothing.
int FlatGraph::connect(int output, int input, Position position)
{
    const int number = new_connection(output, input);
    Connection& made = connections[index(number)];
    Ends& readers = outputs[index(output)];
    (readers.first == NONE ? readers.last : connections[index(readers.first)].previous_reader) =
        number;
    readers.first = number;

    Ends& feeds = inputs[index(input)];
    int before = feeds.last;
    while (position == Position::BY_OUTPUT && before != NONE &&
           inq_connection(before).output > output)
        before = inq_connection(before).previous_feed;
    made.previous_feed = before;
    made.next_feed = before == NONE ? feeds.first : inq_connection(before).next_feed;
    (before == NONE ? feeds.first : connections[index(before)].next_feed) = number;
    (made.next_feed == NONE ? feeds.last : connections[index(made.next_feed)].previous_feed) =
        number;
    is_in_order = is_in_order && inq_place(readers.node) < inq_place(feeds.node);
    return number;
}

void FlatGraph::disconnect(int number)
{
    const Connection gone = inq_connection(number);
    Ends& readers = outputs[index(gone.output)];
    (gone.previous_reader == NONE ? readers.first
                                  : connections[index(gone.previous_reader)].next_reader) =
        gone.next_reader;
    (gone.next_reader == NONE ? readers.last
                              : connections[index(gone.next_reader)].previous_reader) =
        gone.previous_reader;
    Ends& feeds = inputs[index(gone.input)];
    (gone.previous_feed == NONE ? feeds.first : connections[index(gone.previous_feed)].next_feed) =
        gone.next_feed;
    (gone.next_feed == NONE ? feeds.last : connections[index(gone.next_feed)].previous_feed) =
        gone.previous_feed;
    free_connections.push_back(number);
}

/// Both rings are searched side by side: one of them may be very long.
int FlatGraph::find_connection(int output, int input) const
{
    int feed = inq_first_feed(input);
    int reader = inq_first_reader(output);
    while (feed != NONE && reader != NONE) {
        if (inq_connection(feed).output == output)
            return feed;
        if (inq_connection(reader).input == input)
            return reader;
        feed = inq_connection(feed).next_feed;
        reader = inq_connection(reader).next_reader;
    }
    return NONE;
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
        if (colours[index(start)] == DAGOpNode::UNVISITED)
            enter(start);
        while (!path.empty())
            if (!step())
                return false;
        return true;
    }

    std::vector<int> sorted;

private:
    /// A node on the path, its next input, and the next feed of the input before.
    struct Visit {
        int number;
        int input;
        int feed = NONE;
    };

    void enter(int number)
    {
        colours[index(number)] = DAGOpNode::ON_PATH;
        path.push_back({number, graph.inq_node(number).first_input});
    }

    void leave(int number)
    {
        colours[index(number)] = DAGOpNode::FINISHED;
        sorted.push_back(number);
        path.pop_back();
    }

    bool step()
    {
        Visit& now = path.back();
        const Node& node = graph.inq_node(now.number);
        while (now.feed == NONE && now.input < node.first_input + node.n_inputs)
            now.feed = graph.inq_first_feed(now.input++);
        if (now.feed == NONE) {
            leave(now.number);
            return true;
        }
        const Connection& feed = graph.inq_connection(now.feed);
        now.feed = feed.next_feed;
        const int feeder = graph.inq_node_of_output(feed.output);
        if (colours[index(feeder)] == DAGOpNode::ON_PATH)
            return false;
        if (colours[index(feeder)] == DAGOpNode::UNVISITED)
            enter(feeder);
        return true;
    }

    const FlatGraph& graph;
    std::vector<char> colours;
    std::vector<Visit> path;
};

bool FlatGraph::sort()
{
    Sorting sorting(*this);
    for (int number = 0; number < inq_n_nodes(); ++number)
        if (!sorting.visit_from(number))
            return false;
    order = std::move(sorting.sorted);
    for (std::size_t place = 0; place < order.size(); ++place)
        place_in_order[index(order[place])] = static_cast<int>(place);
    return is_in_order = true;
}
