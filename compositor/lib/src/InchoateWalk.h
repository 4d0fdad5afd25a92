#pragma once

#include <vector>

class CNode;
class KIVLinkedList;

/// Sets `F_INCHOATE` on the nodes that are not fully connected and on all that feeds them. The
/// flag thus runs from a node towards its inputs.
class InchoateWalk {
public:
    /// What has changed about a node's connections since the flags were right.
    struct Edit {
        CNode* node;
        const CNode* new_reader = nullptr;
        bool may_lose_flag = true;
    };

    /// On the node and all that feeds it, as far as it is not there yet.
    static void flag(CNode* node);

    /// On all nodes of a graph.
    static void flag_anew(const KIVLinkedList& nodes);

    /// The same after these edits of a graph with these nodes. It costs what they concern, and at
    /// most a few times what all flags cost anew.
    static void flag_after(const std::vector<Edit>& edits, const KIVLinkedList& nodes);

private:
    static void set_flag(CNode& node, bool inchoate);
    static bool leads_to_incomplete(CNode* node, std::vector<CNode*>& passed, int& steps_left);
    static bool unflag(std::vector<CNode*> nodes, int steps_left);
};
