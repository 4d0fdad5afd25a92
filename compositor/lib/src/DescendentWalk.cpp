#include "compositor/lib/src/DescendentWalk.h"

#include "compositor/lib/src/NodeWalk.h"

const CNode* DescendentWalk::asked = nullptr;

gsl::owner<KIVLinkedList*> DescendentWalk::find(const CNode* from)
{
    auto found = std::make_unique<KIVLinkedList>(false);
    walk_beyond(from, Neighbours::children_of, [&](CNode* node) {
        if (node->inq_hidden() && !include_hidden)
            return false;
        if (std::exchange(add(node, *found), true))
            return false;
        return (!node->inq_is_collapsed() || through_collapsed) && ask(node, *found);
    });
    return found.release();
}

bool DescendentWalk::leave_to_walk(const CNode* node)
{
    if (asked != node)
        return false;
    asked = nullptr;
    return true;
}

/// Whether the walk has come by the node itself: it may only be part of a class's answer.
bool& DescendentWalk::add(CNode* node, KIVLinkedList& found)
{
    const auto [place, is_new] = met.try_emplace(node, false);
    if (is_new)
        found.add(node);
    return place->second;
}

/// Whether the walk itself goes on beyond the node.
bool DescendentWalk::ask(const CNode* node, KIVLinkedList& found)
{
    const CNode* const asked_outside = std::exchange(asked, node);
    const std::unique_ptr<KIVLinkedList> own(
        node->inq_descendents(include_hidden, through_collapsed));
    const bool was_left = !asked;
    asked = asked_outside;
    for (CNode* descendent : own->of<CNode>())
        add(descendent, found);
    return was_left;
}
