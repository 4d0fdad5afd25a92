#include "compositor/lib/hdr/DAGOpGraph.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/src/FlatGraph.h"

#include <utility>

namespace {
void delete_connections_of(const DAGOpNode& node)
{
    for (int i = 0; i < node.inq_n_output_channels(); ++i)
        node.inq_outputs()->inq_channel(i)->inq_connections_list()->remove_all_deleting_objects();
}

/// Gives the channels what a check has found at them.
void copy_types(const DAGOpChannelSet* channels, std::span<const cdata_tDArray* const> found)
{
    for (int i = 0; channels && i < static_cast<int>(found.size()); ++i)
        if (const cdata_tDArray* types = found[static_cast<std::size_t>(i)])
            channels->inq_channel(i)->set_data(new cdata_tDArray(*types));
}

void connect(DAGOpGraph& graph, const FlatGraph& source, const std::vector<DAGOpNode*>& mirrors)
{
    for (const FlatGraph::Connection& made : source.inq_connections()) {
        const DAGOpNode& from = *mirrors[static_cast<std::size_t>(made.from_node)];
        const DAGOpNode& to = *mirrors[static_cast<std::size_t>(made.to_node)];
        const int output = made.output - source.inq_node(made.from_node).first_output;
        const int input = made.input - source.inq_node(made.to_node).first_input;
        graph.make_connection(from.inq_outputs()->inq_channel(output),
                              to.inq_inputs()->inq_channel(input));
    }
}

DAGOpConnection* find_last_between(const DAGOpChannel* output, DAGOpChannel* input)
{
    DAGOpConnection* last = nullptr;
    for (auto* connection : input->inq_connections_list()->of<DAGOpConnection>())
        if (connection->inq_output_channel() == output)
            last = connection;
    return last;
}
} // namespace

DAGOpGraph::DAGOpGraph(CNodeGraph* c_graph)
    : nodes(std::make_unique<KIVLinkedList>()), c_graph(c_graph),
      flat(std::make_unique<FlatGraph>(c_graph))
{}

DAGOpGraph::~DAGOpGraph()
{
    for (const DAGOpNode* node : nodes->of<DAGOpNode>())
        delete_connections_of(*node);
    nodes->remove_all_deleting_objects();
}

/// The nodes come in the order that the flat form has reached, with what a check has found.
void DAGOpGraph::build_graph()
{
    const std::unique_ptr<FlatGraph> source = std::move(flat);
    std::vector<DAGOpNode*> mirrors(static_cast<std::size_t>(source->inq_n_nodes()));
    node_map = std::make_unique<Dictionary>(static_cast<unsigned>(source->inq_n_nodes()));
    for (const int number : source->inq_order()) {
        CNode* real = source->inq_node(number).real;
        auto* node = new DAGOpNode(this, real);
        mirrors[static_cast<std::size_t>(number)] = node;
        nodes->add(node);
        node_map->add(*real, *node);
        copy_types(node->inq_inputs(), source->inq_input_types(number));
        copy_types(node->inq_outputs(), source->inq_output_types(number));
    }
    connect(*this, *source, mirrors);
    if (when_built)
        when_built();
}

KIVLinkedList* DAGOpGraph::inq_nodes_list()
{
    if (flat)
        build_graph();
    return nodes.get();
}

void DAGOpGraph::add_node(gsl::owner<DAGOpNode*> node)
{
    inq_nodes_list()->add(node);
    node->set_graph(this);
    if (CNode* real = node->inq_c_node(); real && !find_mirror_of(real))
        node_map->add(*real, *node);
}

gsl::owner<DAGOpNode*> DAGOpGraph::remove_node(DAGOpNode* node)
{
    if (!inq_nodes_list()->remove(node))
        return nullptr;
    DictionaryIterator pairs(node_map.get());
    while (pairs.advance())
        if (pairs.get_assoc()->value == node)
            pairs.remove();
    if (root_node == node)
        root_node = nullptr;
    node->set_graph(nullptr);
    return node;
}

DAGOpNode* DAGOpGraph::find_mirror_of(CNode* node)
{
    if (flat)
        build_graph();
    KIVObject* mirror = nullptr;
    if (node)
        node_map->lookup_assoc(node, &mirror);
    return static_cast<DAGOpNode*>(mirror);
}

DAGOpChannel* DAGOpGraph::find_output(CNodeChannel* real)
{
    const DAGOpNode* mirror = real ? find_mirror_of(real->inq_node()) : nullptr;
    const DAGOpChannelSet* outputs = mirror ? mirror->inq_outputs() : nullptr;
    return outputs ? outputs->inq_channel(real->find_channel_index()) : nullptr;
}

DAGOpChannel* DAGOpGraph::find_input(CNodeChannel* real)
{
    const DAGOpNode* mirror = real ? find_mirror_of(real->inq_node()) : nullptr;
    const DAGOpChannelSet* inputs = mirror ? mirror->inq_inputs() : nullptr;
    return inputs ? inputs->inq_channel(real->find_channel_index()) : nullptr;
}

void DAGOpGraph::make_connection(CNodeChannel* output, CNodeChannel* input)
{
    if (flat)
        flat->make_connection(output, input);
    else
        make_connection(find_output(output), find_input(input));
}

DAGOpConnection* DAGOpGraph::make_connection(DAGOpChannel* output, DAGOpChannel* input)
{
    if (!output || !input)
        return nullptr;
    auto* connection = new DAGOpConnection(output, input);
    output->add_connection(connection);
    input->add_connection(connection);
    return connection;
}

void DAGOpGraph::delete_connection(CNodeConnection* connection)
{
    if (!connection)
        return;
    if (flat) {
        flat->delete_connection(connection);
        return;
    }
    const DAGOpChannel* output = find_output(connection->inq_output_channel());
    DAGOpChannel* input = find_input(connection->inq_input_channel());
    if (output && input)
        delete_connection(find_last_between(output, input));
}

void DAGOpGraph::delete_connection(gsl::owner<DAGOpConnection*> connection)
{
    if (!connection)
        return;
    connection->inq_output_channel()->remove_connection(connection);
    connection->inq_input_channel()->remove_connection(connection);
    delete connection;
}

bool DAGOpGraph::top_sort_nodes()
{
    if (flat)
        return flat->sort();
    for (DAGOpNode* node : nodes->of<DAGOpNode>())
        node->set_flags(DAGOpNode::UNVISITED);
    auto sorted = std::make_unique<KIVLinkedList>();
    for (DAGOpNode* node : nodes->of<DAGOpNode>())
        if (node->inq_flags() == DAGOpNode::UNVISITED && !node->df_visit(sorted.get()))
            return false;
    nodes = std::move(sorted);
    return true;
}
