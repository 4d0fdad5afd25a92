#include "compositor/lib/hdr/DAGOpGraph.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/DAGOpNode.h"

#include <utility>

namespace {
void delete_connections_of(const DAGOpNode& node)
{
    for (int i = 0; i < node.inq_n_output_channels(); ++i)
        node.inq_outputs()->inq_channel(i)->inq_connections_list()->remove_all_deleting_objects();
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
    : nodes(std::make_unique<KIVLinkedList>()), c_graph(c_graph)
{
    build_graph();
}

DAGOpGraph::~DAGOpGraph()
{
    for (const DAGOpNode* node : nodes->of<DAGOpNode>())
        delete_connections_of(*node);
    nodes->remove_all_deleting_objects();
}

void DAGOpGraph::build_graph()
{
    const KIVLinkedList* real_nodes = c_graph ? c_graph->inq_nodes_list() : nodes.get();
    node_map = std::make_unique<Dictionary>(static_cast<unsigned>(real_nodes->count()));
    for (CNode* real : real_nodes->of<CNode>())
        if (real)
            add_node(new DAGOpNode(this, real));
    for (const DAGOpNode* node : nodes->of<DAGOpNode>())
        connect_outputs_of(*node);
}

void DAGOpGraph::connect_outputs_of(const DAGOpNode& node)
{
    for (int i = 0; i < node.inq_n_output_channels(); ++i) {
        const CNodeChannel* real = node.inq_c_node()->inq_outputs()->inq_channel(i);
        for (const auto* made : real->inq_connections_list()->of<CNodeConnection>())
            make_connection(node.inq_outputs()->inq_channel(i),
                            find_input(made ? made->inq_input_channel() : nullptr));
    }
}

void DAGOpGraph::add_node(gsl::owner<DAGOpNode*> node)
{
    nodes->add(node);
    node->set_graph(this);
    if (CNode* real = node->inq_c_node(); real && !find_mirror_of(real))
        node_map->add(*real, *node);
}

gsl::owner<DAGOpNode*> DAGOpGraph::remove_node(DAGOpNode* node)
{
    if (!nodes->remove(node))
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

DAGOpNode* DAGOpGraph::find_mirror_of(CNode* node) const
{
    KIVObject* mirror = nullptr;
    if (node)
        node_map->lookup_assoc(node, &mirror);
    return static_cast<DAGOpNode*>(mirror);
}

DAGOpChannel* DAGOpGraph::find_output(CNodeChannel* real) const
{
    const DAGOpNode* mirror = real ? find_mirror_of(real->inq_node()) : nullptr;
    const DAGOpChannelSet* outputs = mirror ? mirror->inq_outputs() : nullptr;
    return outputs ? outputs->inq_channel(real->find_channel_index()) : nullptr;
}

DAGOpChannel* DAGOpGraph::find_input(CNodeChannel* real) const
{
    const DAGOpNode* mirror = real ? find_mirror_of(real->inq_node()) : nullptr;
    const DAGOpChannelSet* inputs = mirror ? mirror->inq_inputs() : nullptr;
    return inputs ? inputs->inq_channel(real->find_channel_index()) : nullptr;
}

void DAGOpGraph::make_connection(CNodeChannel* output, CNodeChannel* input)
{
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
    for (DAGOpNode* node : nodes->of<DAGOpNode>())
        node->set_flags(DAGOpNode::UNVISITED);
    auto sorted = std::make_unique<KIVLinkedList>();
    for (DAGOpNode* node : nodes->of<DAGOpNode>())
        if (node->inq_flags() == DAGOpNode::UNVISITED && !node->df_visit(sorted.get()))
            return false;
    nodes = std::move(sorted);
    return true;
}
