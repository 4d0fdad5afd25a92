#include "compositor/lib/hdr/CNodeInstance.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeGraph.h"

namespace {
constexpr int NO_PARENT = -1;
}

CNodeInstanceEntry::CNodeInstanceEntry(CNode* node) : CNodeInstanceEntry(node, NO_PARENT) {}

CNodeInstanceEntry::CNodeInstanceEntry(CNode* node, int channel_to_parent)
    : node(node), channel_to_parent(channel_to_parent), label(node->inq_label())
{}

void CNodeInstance::push_root_node(CNode* node)
{
    instance_list = std::make_unique<KIVLinkedList>(true);
    instance_list->add(new CNodeInstanceEntry(node));
    graph = node->inq_graph();
}

void CNodeInstance::push_node(CNode* node, int channel)
{
    if (!instance_list)
        instance_list = std::make_unique<KIVLinkedList>(true);
    instance_list->add(new CNodeInstanceEntry(node, channel));
}

bool CNodeInstance::inq_is_valid() const
{
    if (!instance_list || !graph)
        return false;
    for (const auto* entry : instance_list->of<CNodeInstanceEntry>())
        if (!graph->inq_contains_node(entry->inq_label()))
            return false;
    return true;
}

bool CNodeInstance::is_same_as(const CNodeInstance* other) const
{
    if (!other || !instance_list || !other->instance_list)
        return false;
    const auto mine = instance_list->of<CNodeInstanceEntry>();
    const auto theirs = other->instance_list->of<CNodeInstanceEntry>();
    auto their = theirs.begin();
    for (const auto* entry : mine) {
        if (their == theirs.end() || entry->inq_node() != (*their)->inq_node() ||
            entry->inq_channel_to_parent() != (*their)->inq_channel_to_parent())
            return false;
        ++their;
    }
    return their == theirs.end();
}
