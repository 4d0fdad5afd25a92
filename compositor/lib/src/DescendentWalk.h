#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

#include <unordered_map>

class CNode;

/// The question of `CNode::inq_descendents`, asked of node after node. A class may answer it in
/// its own way; a node that leaves it to `CNode` says so by `leave_to_walk`, and the walk goes on
/// beyond it.
class DescendentWalk {
public:
    DescendentWalk(bool include_hidden, bool through_collapsed)
        : include_hidden(include_hidden), through_collapsed(through_collapsed)
    {}

    gsl::owner<KIVLinkedList*> find(const CNode* from);

    /// False if no walk has asked the node.
    static bool leave_to_walk(const CNode* node);

private:
    bool& add(CNode* node, KIVLinkedList& found);
    bool ask(const CNode* node, KIVLinkedList& found);

    static const CNode* asked;

    bool include_hidden;
    bool through_collapsed;
    std::unordered_map<const CNode*, bool> met; // and whether the walk came by
};
