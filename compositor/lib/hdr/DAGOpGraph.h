#pragma once

#include "kivlib/hdr/Dictionary.h"
#include "kivlib/hdr/KIVLinkedList.h"

#include <memory>

class CNode;
class CNodeChannel;
class CNodeConnection;
class CNodeGraph;
class DAGOpChannel;
class DAGOpConnection;
class DAGOpNode;

/// A private mirror of a node graph as it stood when this was made. It can hold connections that
/// the real graph does not have, and lack others.
class DAGOpGraph : public KIVObject {
public:
    explicit DAGOpGraph(CNodeGraph* c_graph);
    DAGOpGraph(const DAGOpGraph&) = delete;
    DAGOpGraph& operator=(const DAGOpGraph&) = delete;
    ~DAGOpGraph() override;

    DAGOpNode* inq_root_node() const { return root_node; }
    void set_root_node(DAGOpNode* node) { root_node = node; }

    /// The nodes; inputs first after `top_sort_nodes`.
    KIVLinkedList* inq_nodes_list() const { return nodes.get(); }
    void add_node(gsl::owner<DAGOpNode*> node);

    /// The node, which is the caller's from now on, or null for a stranger. Its connections stay:
    /// delete them first.
    gsl::owner<DAGOpNode*> remove_node(DAGOpNode* node);

    /// Null for a node that has no mirror here.
    DAGOpNode* find_mirror_of(CNode* node) const;

    /// Between the mirrors of two real channels; nothing happens if one has none.
    void make_connection(CNodeChannel* output, CNodeChannel* input);
    DAGOpConnection* make_connection(DAGOpChannel* output, DAGOpChannel* input);
    void delete_connection(CNodeConnection* connection);
    void delete_connection(gsl::owner<DAGOpConnection*> connection);

    /// False if there is a cycle; then the order of the nodes stays.
    bool top_sort_nodes();

private:
    void build_graph();
    void connect_outputs_of(const DAGOpNode& node);
    DAGOpChannel* find_output(CNodeChannel* real) const;
    DAGOpChannel* find_input(CNodeChannel* real) const;

    std::unique_ptr<KIVLinkedList> nodes;
    DAGOpNode* root_node = nullptr; // one of `nodes`
    CNodeGraph* c_graph;            // not owned
    std::unique_ptr<Dictionary> node_map;
};
