#include "compositor/lib/hdr/DAGOpNode.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/DAGOpGraph.h"
#include "compositor/lib/src/FlatGraph.h"

namespace {
std::unique_ptr<DAGOpChannelSet> new_set(DAGOpNode* node, int n_channels)
{
    return n_channels > 0 ? std::make_unique<DAGOpChannelSet>(node, n_channels) : nullptr;
}

KIVLinkedList connections_of(const DAGOpChannelSet* channels)
{
    KIVLinkedList all;
    for (int i = 0; channels && i < channels->inq_n_channels(); ++i)
        for (auto* one : channels->inq_channel(i)->inq_connections_list()->of<DAGOpConnection>())
            all.add(one);
    return all;
}

/// A node on the path of a walk, and how far the walk has come with what feeds it.
class VisitedNode {
public:
    explicit VisitedNode(DAGOpNode* node) : node(node) { node->set_flags(DAGOpNode::ON_PATH); }

    /// Null when there are no more.
    DAGOpNode* next_feeder()
    {
        while (!link && channel < node->inq_n_input_channels())
            link = node->inq_inputs()
                       ->inq_channel(channel++)
                       ->inq_connections_list()
                       ->inq_first_link();
        if (!link)
            return nullptr;
        const auto* connection = static_cast<DAGOpConnection*>(link->value());
        link = link->inq_next();
        return connection->inq_output_channel()->inq_node();
    }

    DAGOpNode* node;

private:
    int channel = 0;
    const KIVLinkOb* link = nullptr;
};
} // namespace

DAGOpNode::DAGOpNode(DAGOpGraph* graph, CNode* c_node)
    : graph(graph), c_node(c_node), inputs(new_set(this, inq_n_mirrored_inputs(*c_node))),
      outputs(new_set(this, inq_n_mirrored_outputs(*c_node)))
{}

void DAGOpNode::init() {}

int DAGOpNode::inq_n_vis_input_channels() const
{
    return inq_n_input_channels();
}

int DAGOpNode::inq_n_vis_output_channels() const
{
    return inq_n_output_channels();
}

void DAGOpNode::add_to_graph(DAGOpGraph* to)
{
    to->add_node(this);
}

void DAGOpNode::remove_from_graph()
{
    if (graph)
        graph->remove_node(this);
}

KIVLinkedList DAGOpNode::inq_in_connections_list() const
{
    return connections_of(inputs.get());
}

KIVLinkedList DAGOpNode::inq_out_connections_list() const
{
    return connections_of(outputs.get());
}

/// After a cycle the walk goes back along its path at once, and leaves even these nodes on the
/// list.
bool DAGOpNode::df_visit(KIVLinkedList* list)
{
    bool ok = true;
    std::vector<VisitedNode> path{VisitedNode(this)};
    while (!path.empty()) {
        DAGOpNode* feeder = ok ? path.back().next_feeder() : nullptr;
        if (!feeder) {
            list->add(path.back().node);
            path.back().node->set_flags(FINISHED);
            path.pop_back();
        } else if (feeder->flags == ON_PATH) {
            ok = false;
        } else if (feeder->flags == UNVISITED) {
            path.emplace_back(feeder);
        }
    }
    return ok;
}

void DAGOpNode::drop_ops()
{
    td_op.set_own(nullptr);
    bu_op.set_own(nullptr);
}

void DAGOpNode::drop_all_ops()
{
    drop_ops();
    for (const DAGOpChannelSet* channels : {inputs.get(), outputs.get()})
        for (int i = 0; channels && i < channels->inq_n_channels(); ++i)
            channels->inq_channel(i)->drop_ops();
}

void DAGOpNode::set_op(const KIVString& name, DAGOpTopDown* otherwise)
{
    drop_ops();
    td_op.set(c_node->inq_td_dag_op(name, this), otherwise);
}

void DAGOpNode::set_op(const KIVString& name, DAGOpBottomUp* otherwise)
{
    drop_ops();
    bu_op.set(c_node->inq_bu_dag_op(name, this), otherwise);
}

void DAGOpNode::set_exec(DAGExec* exec)
{
    if (DAGOpBottomUp* op = bu_op.get())
        op->set_exec(exec);
}

void DAGOpNode::execute()
{
    td_op.execute();
    bu_op.execute();
}
