#include "compositor/lib/src/InchoateWalk.h"

#include "compositor/lib/src/NodeWalk.h"

void InchoateWalk::set_flag(CNode& node, bool inchoate)
{
    node.set_flag(CNode::F_INCHOATE, inchoate);
}

void InchoateWalk::flag(CNode* node)
{
    walk_from(node, Neighbours::children_of, [](CNode* met) {
        if (met->inq_inchoate_flag())
            return false;
        set_flag(*met, true);
        return true;
    });
}

void InchoateWalk::flag_anew(const KIVLinkedList& nodes)
{
    for (CNode* node : nodes.of<CNode>())
        if (node)
            set_flag(*node, false);
    for (CNode* node : nodes.of<CNode>())
        if (node && !node->inq_is_fully_connected())
            flag(node);
}

/// First all flags are set that are due, so that from every node that bears its flag rightly flags
/// lead to an incomplete one.
void InchoateWalk::flag_after_edit(const std::vector<CNode*>& edited)
{
    for (CNode* node : edited)
        if (!node->inq_inchoate_flag() && node->should_be_inchoate())
            flag(node);
    unflag(edited);
}

/// These, and what feeds them, where no incomplete node is left that they lead to.
void InchoateWalk::unflag(std::vector<CNode*> nodes)
{
    std::vector<CNode*> passed;
    while (!nodes.empty()) {
        CNode* node = nodes.back();
        nodes.pop_back();
        passed.clear();
        if (!node->inq_inchoate_flag() || leads_to_incomplete(node, passed))
            continue;
        for (CNode* complete : passed)
            set_flag(*complete, false);
        for (const CNode* complete : passed) {
            Neighbours feeders = Neighbours::children_of(complete);
            while (CNode* feeder = feeders.next())
                nodes.push_back(feeder);
        }
    }
}

/// If it does not, neither do those that the walk has passed.
bool InchoateWalk::leads_to_incomplete(CNode* node, std::vector<CNode*>& passed)
{
    bool is_found = false;
    const NodeWalk walk;
    walk_from(node, Neighbours::parents_of, [&](CNode* met) {
        if (is_found || !met->inq_inchoate_flag() || !walk.enter(met))
            return false;
        passed.push_back(met);
        is_found = !met->inq_is_fully_connected();
        return !is_found;
    });
    return is_found;
}
