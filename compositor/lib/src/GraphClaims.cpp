#include "compositor/lib/src/GraphClaims.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"

namespace {
/// Whether an object that stood in a list of a file is of the class.
template <class Class> bool is_a(const KIVObject* object)
{
    const ClassDescriptor* record = object->inq_class_descriptor();
    const StoredType* type = record ? record->inq_stored_type() : nullptr;
    return type && type->is_a(stored::type_of<Class>);
}

template <class Fits> bool all_channels(const CNodeChannelSet* set, Fits fits)
{
    for (int i = 0; set && i < set->inq_n_channels(); ++i)
        if (!fits(*set->inq_channel(i)))
            return false;
    return true;
}
} // namespace

bool GraphClaims::claim(const KIVLinkedList& listed, const CNode* root)
{
    if (stream.inq_error_state() != KIVStream::OKAY)
        return false;
    const bool is_whole =
        claim_nodes(listed) && is_known(root) &&
        std::ranges::all_of(nodes, [&](const CNode* node) { return is_sound(*node); }) &&
        std::ranges::all_of(nodes, [&](const CNode* node) { return claim_outgoing(*node); }) &&
        std::ranges::all_of(nodes, [&](const CNode* node) { return meet_incoming(*node); }) &&
        half_met.empty();
    if (!is_whole) {
        stream.set_error_state(KIVStream::BAD_DATA); // unless a claim was refused for its own
        delete_claimed();
    }
    return is_whole;
}

bool GraphClaims::claim_nodes(const KIVLinkedList& listed)
{
    known.reserve(static_cast<std::size_t>(listed.count()));
    for (KIVObject* object : listed.of<KIVObject>()) {
        if (!stream.claim(object))
            return false;
        if (!is_a<CNode>(object)) {
            delete object;
            return false;
        }
        nodes.push_back(static_cast<CNode*>(object));
        known.insert(nodes.back());
    }
    return true;
}

bool GraphClaims::is_sound(const CNode& node) const
{
    const auto is_own = [&](const CNodeChannelSet* set) {
        return !set || set->inq_node() == &node;
    };
    return is_own(node.inq_inputs()) && is_own(node.inq_outputs()) && is_known(node.group) &&
           is_known(node.macro) && are_known(node.named_nodes) &&
           (!node.graph || node.graph == graph);
}

bool GraphClaims::are_known(const KIVLinkedList* named) const
{
    if (!named)
        return true;
    for (const KIVObject* object : named->of<KIVObject>())
        if (!is_known(object))
            return false;
    return true;
}

bool GraphClaims::claim_outgoing(const CNode& node)
{
    return all_channels(node.inq_outputs(),
                        [this](const CNodeChannel& channel) { return claim_connections(channel); });
}

bool GraphClaims::claim_connections(const CNodeChannel& output)
{
    for (KIVObject* object : output.inq_connections_list()->of<KIVObject>()) {
        const CNodeConnection* connection = claim_connection(object);
        if (!connection || connection->inq_output_channel() != &output)
            return false;
        if (connection->inq_input_channel())
            half_met.insert(connection);
    }
    return true;
}

/// Null if it can't be claimed.
const CNodeConnection* GraphClaims::claim_connection(KIVObject* object)
{
    if (!stream.claim(object))
        return nullptr;
    if (!is_a<CNodeConnection>(object)) {
        delete object;
        return nullptr;
    }
    connections.push_back(static_cast<CNodeConnection*>(object));
    return connections.back();
}

bool GraphClaims::meet_incoming(const CNode& node)
{
    return all_channels(node.inq_inputs(),
                        [this](const CNodeChannel& channel) { return meet_connections(channel); });
}

bool GraphClaims::meet_connections(const CNodeChannel& input)
{
    for (KIVObject* object : input.inq_connections_list()->of<KIVObject>()) {
        const CNodeConnection* connection = meet_connection(object);
        if (!connection || connection->inq_input_channel() != &input)
            return false;
    }
    return true;
}

/// Null unless it was claimed at its output or has none.
const CNodeConnection* GraphClaims::meet_connection(KIVObject* object)
{
    if (half_met.erase(object) > 0)
        return static_cast<const CNodeConnection*>(object);
    const CNodeConnection* connection = claim_connection(object);
    return connection && !connection->inq_output_channel() ? connection : nullptr;
}

void GraphClaims::delete_claimed()
{
    for (CNodeConnection* connection : connections)
        delete connection;
    for (CNode* node : nodes)
        delete node;
}
