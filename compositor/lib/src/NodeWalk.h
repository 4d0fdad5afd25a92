#pragma once

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeConnection.h"

#include <algorithm>
#include <vector>

// Walks over the nodes of a graph that need no stack of the machine's: a graph may be one chain.

/// Marks the nodes that a walk has met. Walks over the same nodes must not be mixed.
class NodeWalk {
public:
    /// False if the walk has been there.
    bool enter(const CNode* node) const
    {
        if (node->last_walk == number)
            return false;
        node->last_walk = number;
        return true;
    }

private:
    inline static unsigned long our_count = 0;

    unsigned long number = ++our_count;
};

/// The nodes at the far ends of a node's connections: channel by channel, each channel's in list
/// order.
class Neighbours {
public:
    static Neighbours children_of(const CNode* node)
    {
        return Neighbours(node->inq_inputs(), &CNodeConnection::inq_output_channel);
    }
    static Neighbours parents_of(const CNode* node)
    {
        return Neighbours(node->inq_outputs(), &CNodeConnection::inq_input_channel);
    }

    /// Null after the last.
    CNode* next()
    {
        for (;;) {
            if (!link && !step_to_next_channel())
                return nullptr;
            if (!link)
                continue;
            const auto* connection = static_cast<const CNodeConnection*>(link->value());
            link = link->inq_next();
            const CNodeChannel* far_channel = connection ? (connection->*far_end)() : nullptr;
            if (CNode* node = far_channel ? far_channel->inq_node() : nullptr)
                return node;
        }
    }

private:
    using FarEnd = CNodeChannel* (CNodeConnection::*)() const;

    Neighbours(const CNodeChannelSet* set, FarEnd far_end) : set(set), far_end(far_end) {}

    bool step_to_next_channel()
    {
        if (!set || channel == set->inq_n_channels())
            return false;
        link = set->inq_channel(channel++)->inq_connections_list()->inq_first_link();
        return true;
    }

    const CNodeChannelSet* set;
    FarEnd far_end;
    int channel = 0;
    const KIVLinkOb* link = nullptr;
};

using NeighboursOf = Neighbours (*)(const CNode*);

/// The nodes beyond `from`, depth first. `visit(node)` says whether the walk goes on beyond it.
template <class Visit> void walk_beyond(const CNode* from, NeighboursOf neighbours_of, Visit visit)
{
    std::vector<CNode*> waiting;
    const auto add_beyond = [&](const CNode* node) {
        const auto old_size = static_cast<std::ptrdiff_t>(waiting.size());
        Neighbours neighbours = neighbours_of(node);
        while (CNode* neighbour = neighbours.next())
            waiting.push_back(neighbour);
        std::reverse(waiting.begin() + old_size, waiting.end());
    };
    add_beyond(from);
    while (!waiting.empty()) {
        CNode* node = waiting.back();
        waiting.pop_back();
        if (visit(node))
            add_beyond(node);
    }
}

/// The same, with `from` itself first.
template <class Visit> void walk_from(CNode* from, NeighboursOf neighbours_of, Visit visit)
{
    if (visit(from))
        walk_beyond(from, neighbours_of, visit);
}
