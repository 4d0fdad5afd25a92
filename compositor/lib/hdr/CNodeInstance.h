#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

class CNode;
class CNodeGraph;

/// One node of a path through nested macros, with the channel that leads to its parent: -1 for the
/// root.
class CNodeInstanceEntry : public KIVObject {
public:
    explicit CNodeInstanceEntry(CNode* node);
    CNodeInstanceEntry(CNode* node, int channel_to_parent);

    /// It may have gone since: see `CNodeInstance::inq_is_valid`.
    CNode* inq_node() const { return node; }
    int inq_channel_to_parent() const { return channel_to_parent; }

    /// The node's label when it was entered.
    unsigned int inq_label() const { return label; }

private:
    CNode* node; // not owned
    int channel_to_parent;
    unsigned int label;
};

/// Names one use of a node: the path to it from the root.
class CNodeInstance {
public:
    void push_root_node(CNode* node);
    void push_node(CNode* node, int channel);

    /// `CNodeInstanceEntry`s; null before the root was pushed.
    const KIVLinkedList* inq_instance_list() const { return instance_list.get(); }

    /// Whether all nodes of the path are still in the graph.
    bool inq_is_valid() const;
    bool is_same_as(const CNodeInstance* other) const;

private:
    std::unique_ptr<KIVLinkedList> instance_list;
    CNodeGraph* graph = nullptr; // not owned
};
