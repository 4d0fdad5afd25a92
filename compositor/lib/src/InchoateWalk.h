#pragma once

#include <vector>

class CNode;
class KIVLinkedList;

/// Sets `F_INCHOATE` on the nodes that are not fully connected and on all that feeds them. The
/// flag thus runs from a node towards its inputs.
class InchoateWalk {
public:
    /// On the node and all that feeds it, as far as it is not there yet.
    static void flag(CNode* node);

    /// On all nodes of a graph.
    static void flag_anew(const KIVLinkedList& nodes);

    /// The same where the flags were right before the connections of some nodes changed.
    static void flag_after_edit(const std::vector<CNode*>& edited);

private:
    static void set_flag(CNode& node, bool inchoate);
    static bool leads_to_incomplete(CNode* node, std::vector<CNode*>& passed);
    static void unflag(std::vector<CNode*> nodes);
};
