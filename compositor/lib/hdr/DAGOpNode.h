#pragma once

#include "compositor/lib/hdr/DAGOpBase.h"
#include "compositor/lib/hdr/DAGOpChannel.h"

class CNode;
class DAGExec;
class DAGOpGraph;
class KIVString;

/// The mirror of one node, with the operators of the pass.
class DAGOpNode : public KIVObject {
public:
    /// The visit colours that `inq_flags` gives.
    static constexpr int UNVISITED = 0;
    static constexpr int ON_PATH = 1;
    static constexpr int FINISHED = 2;

    DAGOpNode(DAGOpGraph* graph, CNode* c_node);

    virtual void init();
    virtual int inq_n_vis_input_channels() const;
    virtual int inq_n_vis_output_channels() const;
    virtual void add_to_graph(DAGOpGraph* graph);
    virtual void remove_from_graph();

    bool inq_is_enabled() const { return is_enabled; }
    void set_is_enabled(bool enabled) { is_enabled = enabled; }
    DAGOpGraph* inq_graph() const { return graph; }
    void set_graph(DAGOpGraph* of_mirror) { graph = of_mirror; }
    CNode* inq_c_node() const { return c_node; }

    /// Null if the node's class declares no such channels.
    DAGOpChannelSet* inq_inputs() const { return inputs.get(); }
    DAGOpChannelSet* inq_outputs() const { return outputs.get(); }
    int inq_n_input_channels() const { return inputs ? inputs->inq_n_channels() : 0; }
    int inq_n_output_channels() const { return outputs ? outputs->inq_n_channels() : 0; }
    KIVLinkedList inq_in_connections_list() const;
    KIVLinkedList inq_out_connections_list() const;

    int inq_flags() const { return flags; }
    void set_flags(int colour) { flags = colour; }

    /// Appends what feeds this node and then the node itself, each node of the graph once. False
    /// if the walk met a cycle.
    bool df_visit(KIVLinkedList* list);

    /// Asks the node for the operator of the pass `name`; `otherwise` stays the pass's.
    void set_op(const KIVString& name, DAGOpTopDown* otherwise);
    void set_op(const KIVString& name, DAGOpBottomUp* otherwise);
    void set_exec(DAGExec* exec);

    /// Those of its channels too.
    void drop_all_ops();
    DAGOpTopDown* inq_td_op() const { return td_op.get(); }
    DAGOpBottomUp* inq_bu_op() const { return bu_op.get(); }
    void execute();

private:
    void drop_ops();

    bool is_enabled = true;
    DAGOpGraph* graph; // not owned
    CNode* c_node;     // not owned
    std::unique_ptr<DAGOpChannelSet> inputs;
    std::unique_ptr<DAGOpChannelSet> outputs;
    int flags = UNVISITED;
    DAGOpSlot<DAGOpTopDown> td_op;
    DAGOpSlot<DAGOpBottomUp> bu_op;
};
