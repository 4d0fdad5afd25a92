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
void InchoateWalk::flag_after(const std::vector<Edit>& edits, const KIVLinkedList& nodes)
{
    const int most_steps = 4 * nodes.count() + 1000; // more cost as much as to set all anew
    for (const Edit& edit : edits)
        if (!edit.node->inq_is_fully_connected() ||
            (edit.new_reader && edit.new_reader->inq_inchoate_flag()))
            flag(edit.node);
    std::vector<CNode*> doubtful;
    for (const Edit& edit : edits)
        if (edit.may_lose_flag)
            doubtful.push_back(edit.node);
    if (!unflag(std::move(doubtful), most_steps))
        flag_anew(nodes);
}

/// These, and what feeds them, where no incomplete node is left that they lead to. False if it gave
/// up.
bool InchoateWalk::unflag(std::vector<CNode*> nodes, int steps_left)
{
    std::vector<CNode*> passed;
    while (!nodes.empty()) {
        CNode* node = nodes.back();
        nodes.pop_back();
        passed.clear();
        if (!node->inq_inchoate_flag() || leads_to_incomplete(node, passed, steps_left))
            continue;
        if (steps_left <= 0)
            return false;
        for (CNode* complete : passed)
            set_flag(*complete, false);
        for (const CNode* complete : passed) {
            Neighbours feeders = Neighbours::children_of(complete);
            while (CNode* feeder = feeders.next())
                nodes.push_back(feeder);
        }
    }
    return true;
}

/// If it does not, neither do those that the walk has passed. Without a step left it says nothing.
/// Other graphs' nodes do not count.
bool InchoateWalk::leads_to_incomplete(CNode* node, std::vector<CNode*>& passed, int& steps_left)
{
    std::vector<Neighbours> way;
    const NodeWalk walk;
    for (CNode* met = node; steps_left > 0; met = way.back().next()) {
        --steps_left;
        if (!met) {
            way.pop_back();
        } else if (met->inq_inchoate_flag() && met->inq_graph() == node->inq_graph() &&
                   walk.enter(met)) {
            if (!met->inq_is_fully_connected())
                return true;
            passed.push_back(met);
            way.push_back(Neighbours::parents_of(met));
        }
        if (way.empty())
            return false;
    }
    return false;
}
