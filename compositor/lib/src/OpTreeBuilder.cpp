#include "compositor/lib/src/OpTreeBuilder.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/DataType.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "compositor/lib/hdr/cdata_tDArray.h"
#include "compositor/lib/src/GraphChanges.h"
#include "compositor/lib/src/fetch.h"

namespace {
constexpr auto ALL = static_cast<std::size_t>(-1);

/// The nodes that the thread's last evaluation was built of, in the order in which it met them: the
/// next frame meets them so again.
struct Trail {
    const CNode* root = nullptr;
    unsigned long known_at = 0; // the count of graph changes then
    std::vector<const CNode*> nodes;
};
thread_local Trail last_trail;

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
    take_trail(root);
    start(nullptr, 0, requested_type, root, channel);
    while (!path.empty()) {
        if (is_endless)
            drop();
        else
            step();
    }
    leave_trail(root);
    return ops.empty() ? nullptr : ops.back();
}

/// The trail of the last evaluation holds while no graph has changed: all its nodes are there.
void OpTreeBuilder::take_trail(const CNode* root)
{
    begun_at = GraphChanges::our_count;
    if (last_trail.root == root && last_trail.known_at == begun_at)
        trail.swap(last_trail.nodes);
    last_trail.root = nullptr;
}

void OpTreeBuilder::leave_trail(const CNode* root)
{
    trail.resize(std::min(trail.size(), n_met));
    last_trail.nodes.swap(trail);
    last_trail.root = root;
    last_trail.known_at = begun_at;
}

/// Fetches what the nodes ahead are read for, or notes the node where nothing is known of them.
void OpTreeBuilder::step_on_trail(const CNode& node)
{
    constexpr std::size_t FAR = 16;
    constexpr std::size_t NEAR = 8;
    constexpr std::size_t NEXT = 4;
    const std::size_t here = n_met++;
    if (here >= trail.size())
        trail.push_back(&node);
    if (begun_at != GraphChanges::our_count)
        return; // a node has changed a graph meanwhile
    if (here + FAR < trail.size())
        fetch(trail[here + FAR], sizeof(CNode));
    if (here + NEAR < trail.size()) {
        fetch(trail[here + NEAR]->inq_inputs(), sizeof(CNodeChannelSet));
        fetch(trail[here + NEAR]->inq_values(), VALUES);
    }
    const CNode* next = here + NEXT < trail.size() ? trail[here + NEXT] : nullptr;
    if (const CNodeChannelSet* inputs = next ? next->inq_inputs() : nullptr)
        fetch(inputs->inq_feeds().data(), sizeof(CNodeChannelSet::Feed));
}

void OpTreeBuilder::start(CNodeOpArray* parent, int place, int requested_type, CNode* node,
                          int channel)
{
    if (!node || inq_is_endless(*node))
        return;
    step_on_trail(*node);
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
         .places = 0,
         .feeds = ALL});
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
    if (now.places > 0)
        follow_next(now);
    else if (!(now.channel == 0 ? finish(now) : open_next_input(now)))
        drop();
}

void OpTreeBuilder::follow_next(Unfinished& now)
{
    const std::vector<CNodeChannelSet::Feed>& feeds = now.node->inq_inputs()->inq_feeds();
    const int place = --now.places;
    if (--now.feeds >= feeds.size())
        return; // a node has cut its own graph
    const CNodeChannelSet::Feed feed = feeds[now.feeds];
    start(now.array, place, now.array_type, feed.node, feed.output);
}

/// False if the input's data type can't be told.
bool OpTreeBuilder::open_next_input(Unfinished& now)
{
    const int i = --now.channel;
    const CNodeChannelSet& inputs = *now.node->inq_inputs();
    const auto type = resolved(declared_input_type(*now.node, i), *now.node, now.requested_type);
    if (!type)
        return false;
    const std::vector<CNodeChannelSet::Feed>& feeds = inputs.inq_feeds();
    now.feeds = std::min(now.feeds, feeds.size());
    for (std::size_t at = now.feeds; at > 0 && feeds[at - 1].input == i; --at)
        ++now.places;
    now.array = new CNodeOpArray(now.places, *type, inputs.inq_channel(i)->inq_is_selected());
    now.inputs->set_nodeop_array(i, now.array);
    now.array_type = *type;
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
