#pragma once

#include "compositor/lib/hdr/OpMemory.h"
#include "kivlib/hdr/KIVString.h"

#include <memory>

class AbortPanel;
class CData;
class CDataConvertor;
class CNode;
class CNodeOpArray;
class CNodeOpArraySet;
class GraphExec;
class KIVError;

/// What an op does in this run: compute, hand on its first input, or hand on all its inputs since
/// nothing of it is wanted.
enum nodeop_state_t { NODEOP_ACTIVE = 0, NODEOP_DISABLED = 1, NODEOP_QUIESCENT = 2 };

/// The evaluation of one node for one consumer. Requests go from it to its inputs, then immediate
/// and generated data come back.
class CNodeOp : public KIVObject {
public:
    explicit CNodeOp(CNode* node);
    CNodeOp(const CNodeOp&) = delete;
    CNodeOp& operator=(const CNodeOp&) = delete;
    ~CNodeOp() override;

    using KIVObject::operator new;
    static void* operator new(std::size_t size) { return OpMemory::allocate(size); }

    /// Takes a snapshot of what the op needs from its node.
    virtual void copy_node_info(CNode* node);
    virtual void copy_request_data_to_inputs();
    virtual void init_data(AbortPanel* abort);
    virtual void generate_data(AbortPanel* abort);
    virtual void disabled_copy_request_data_to_inputs();
    virtual void disabled_init_data(AbortPanel* abort);
    virtual void disabled_generate_data(AbortPanel* abort);
    virtual void auto_union_immediate_data(AbortPanel* abort);
    virtual void auto_union_generated_data(AbortPanel* abort);

    /// Whether the op can draw straight into what its consumer draws into.
    virtual bool inq_can_composite();

    /// Whether what feeds the op can draw straight into what the op's consumer draws into.
    virtual bool inq_composite_through();

    /// Whether the op computes in interactive mode too.
    virtual bool inq_interactive();

    CNode* inq_node() const { return node; }
    const KIVString& inq_node_name() const { return node_name; }
    void set_node_name(const KIVString& name) { node_name = name; }
    unsigned int inq_label() const { return label; }
    GraphExec* inq_graph() const { return graph; }
    void set_graph(GraphExec* exec) { graph = exec; }
    nodeop_state_t inq_state() const { return state; }
    bool inq_quiescent() const { return quiescent; }
    void set_quiescent(bool is_quiescent) { quiescent = is_quiescent; }

    /// The array of the consumer; null for the root.
    CNodeOpArray* inq_parent() const { return parent; }
    void set_parent(CNodeOpArray* array) { parent = array; }

    /// The op that reads this one; null for the root.
    CNodeOp* inq_consumer() const;

    void set_inputs(gsl::owner<CNodeOpArraySet*> set);
    CNodeOpArraySet* inq_nodeop_array_set() const { return inputs.get(); }
    int inq_n_inputs() const;

    /// Null out of range.
    CNodeOpArray* inq_inputs(int i) const;
    bool inq_is_input_channel_selected(int i) const;

    void set_output_channel_index(int i) { output_channel_index = i; }
    bool inq_is_output_channel_selected() const;

    /// Takes `data` of the node's own type over, and makes what converts it to `type` if that
    /// differs.
    void set_outputs(int type, gsl::owner<CData*> data);

    /// What the consumer reads: the converted data if there are any, else the node's.
    CData* inq_output_data() const
    {
        return converted_data ? converted_data.get() : node_data.get();
    }
    CData* inq_node_data() const { return node_data.get(); }
    CData* inq_converted_data() const { return converted_data.get(); }

    void do_setup_data(bool is_quiescent);
    void do_request_data(AbortPanel* abort);
    void do_immediate_data(AbortPanel* abort);
    void generate_node_data(AbortPanel* abort);

    /// The request of input `i` has changed: asks that input again and takes its new answer.
    void changed_request(int i, AbortPanel* abort);

    /// The same for all inputs, from this op's own request on.
    void changed_request(AbortPanel* abort);

    /// False means: stop the run.
    bool signal_exception(gsl::owner<KIVError*> error);
    void report_status(gsl::owner<KIVError*> status);

    /// Whether a layer above has promised to cover all that is asked of this op. Known from the
    /// request phase on.
    bool inq_is_under_cover() const { return is_under_cover; }

    /// Whether all that feeds this op can draw into this op's target.
    bool inq_all_direct_composite();

    /// The data of `type` nearest the root that this op can draw into; null if there are none.
    CData* inq_composite_output(int type);

    /// What the consumer offers to draw into, or else this op's output.
    CData* inq_converted_composite_output(int type);

protected:
    /// For the request phase: this op is going to cover all that is asked of it and lets nothing
    /// shine through. What lies below may then put off what is dear to find out.
    void promise_cover();

private:
    friend class CNodeOpArray;
    friend class GraphExec;
    struct Asked;

    bool inq_is_selected() const;
    bool inq_is_disabled();
    bool inq_input_types_same_as_output() const;
    int inq_n_passed_inputs() const;
    CData* inq_input_data(int i) const;
    void hand_request_on();
    void take_request();
    void answer(AbortPanel* abort);
    void note_request();
    bool take_earlier_answer();
    void note_answer();
    void forget_request();
    void forget_answers();
    unsigned long inq_direct_phase() const;
    bool inq_composites_directly();
    bool inq_knows_all_direct(unsigned long phase) const;
    bool inq_all_direct_composite(unsigned long phase);
    bool find_all_direct_composite(unsigned long phase);
    bool inq_lets_through(unsigned long phase);
    bool inq_knows_target(int type, unsigned long phase) const;
    CData* inq_composite_output(int type, unsigned long phase);
    void share_target(CData* found, const CNodeOp* offering, const CNodeOp* last, int type,
                      unsigned long phase);

    CNode* node; // not owned
    KIVString node_name;
    CNodeOpArray* parent = nullptr; // not owned
    std::unique_ptr<CNodeOpArraySet> inputs;
    int output_channel_index = 0;
    std::unique_ptr<CData> node_data;
    std::unique_ptr<CData> converted_data;
    std::unique_ptr<CDataConvertor> convertor;
    nodeop_state_t state = NODEOP_ACTIVE;
    GraphExec* graph = nullptr; // not owned
    bool quiescent = false;
    unsigned int label;
    bool is_under_cover = false;
    bool awaits_answer = true; // since it was asked last
    bool is_answering = false;
    std::unique_ptr<Asked> asked; // null until a changed request has reached the op

    // What was found about direct compositing, and in which phase.
    bool is_all_direct = false;
    int target_type = 0;
    unsigned long direct_phase = 0;
    unsigned long target_phase = 0;
    CData* target = nullptr; // not owned
};
