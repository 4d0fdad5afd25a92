#include "compositor/lib/src/OpTreeBuilder.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/cdata_tDArray.h"

namespace {
/// The type that a channel carries for a consumer that wants `requested`; none if the node's
/// checked types leave it open.
std::optional<int> resolved(int type, const CNode& node, int requested)
{
    if (type != WILDCARD_TYPE && type != SECOND_WILDCARD_TYPE)
        return type;
    const cdata_tDArray* types = node.inq_types();
    if (!types)
        return IMAGE_TYPE;
    if (types->size() == 1)
        return (*types)[0];
    for (int i = 0; i < types->size(); ++i)
        if ((*types)[i] == requested)
            return requested;
    return std::nullopt;
}

/// What `CNodeChannel::find_data_type` tells of a channel whose place is known.
int declared_input_type(const CNode& node, int i)
{
    const CNodeDescriptor* descriptor = node.inq_desc();
    return descriptor ? descriptor->inq_input_type(i) : NO_DATA_TYPE;
}

int declared_output_type(const CNode& node, int i)
{
    const CNodeChannelSet* outputs = node.inq_outputs();
    const bool has_it = outputs && outputs->is_valid_channel(i);
    const CNodeDescriptor* descriptor = has_it ? node.inq_desc() : nullptr;
    return descriptor ? descriptor->inq_output_type(i) : NO_DATA_TYPE;
}
} // namespace

CNodeOp* OpTreeBuilder::build(int requested_type, CNode* root, int channel)
{
    const CNodeGraph* graph = root ? root->inq_graph() : nullptr;
    if (graph)
        longest_path = static_cast<std::size_t>(graph->inq_nodes_list()->count());
    start(nullptr, 0, requested_type, root, channel);
    while (!path.empty()) {
        if (is_endless)
            drop();
        else
            step();
    }
    return ops.empty() ? nullptr : ops.back();
}

void OpTreeBuilder::start(CNodeOpArray* parent, int place, int requested_type, CNode* node,
                          int channel)
{
    if (!node || inq_is_endless(*node))
        return;
    std::unique_ptr<CNodeOp> op(node->new_nodeop(requested_type));
    if (!op)
        return;
    op->set_parent(parent);
    const int n = node->inq_n_input_channels();
    auto inputs = std::make_unique<CNodeOpArraySet>(op.get(), n);
    path.push_back(
        {.op = std::move(op),
         .inputs = std::move(inputs),
         .node = node,
         .output_channel = channel,
         .output_type = resolved(declared_output_type(*node, channel), *node, requested_type),
         .requested_type = requested_type,
         .parent = parent,
         .place = place,
         .first_op = ops.size(),
         .channel = n,
         .array = nullptr,
         .array_type = NO_DATA_TYPE,
         .link = nullptr,
         .next_place = 0});
}

/// Whether a path has met a node twice. Then there is no tree: its ops would be without number.
bool OpTreeBuilder::inq_is_endless(const CNode& next)
{
    if (!is_endless && path.size() >= longest_path)
        is_endless = std::ranges::count(path, &next, &Unfinished::node) > 0;
    return is_endless;
}

void OpTreeBuilder::step()
{
    Unfinished& now = path.back();
    if (now.link)
        follow_connection(now);
    else if (!(now.channel == 0 ? finish(now) : open_next_input(now)))
        drop();
}

void OpTreeBuilder::follow_connection(Unfinished& now)
{
    const auto* connection = static_cast<const CNodeConnection*>(now.link->value());
    now.link = now.link->inq_prev();
    const int place = now.next_place--;
    if (const CNodeChannel* output = connection ? connection->inq_output_channel() : nullptr)
        start(now.array, place, now.array_type, output->inq_node(), output->find_channel_index());
}

/// False if the input's data type can't be told.
bool OpTreeBuilder::open_next_input(Unfinished& now)
{
    const int i = --now.channel;
    const CNodeChannel& channel = *now.node->inq_inputs()->inq_channel(i);
    const auto type = resolved(declared_input_type(*now.node, i), *now.node, now.requested_type);
    if (!type)
        return false;
    const KIVLinkedList& connections = *channel.inq_connections_list();
    now.array = new CNodeOpArray(connections.count(), *type, channel.inq_is_selected());
    now.inputs->set_nodeop_array(i, now.array);
    now.array_type = *type;
    now.link = connections.inq_last_link();
    now.next_place = connections.count() - 1;
    return true;
}

/// False if the output's data type can't be told.
bool OpTreeBuilder::finish(Unfinished& now)
{
    if (!now.output_type)
        return false;
    now.op->set_output_channel_index(now.output_channel);
    now.op->set_outputs(now.requested_type, CDataDescriptor::new_data(*now.output_type));
    now.op->set_inputs(now.inputs.release());
    now.op->set_graph(&exec);
    ops.push_back(now.op.get());
    CNodeOp* op = now.op.release();
    if (now.parent)
        now.parent->set_nodeop(now.place, op);
    path.pop_back();
    return true;
}

/// The op goes with all that feeds it, and its place in the consumer's array stays empty.
void OpTreeBuilder::drop()
{
    const std::size_t first = path.back().first_op;
    path.pop_back();
    for (std::size_t i = first; i < ops.size(); ++i)
        delete ops[i];
    ops.resize(first);
}
