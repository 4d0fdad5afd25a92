#pragma once

#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/ObjectBlocks.h"

#include <memory>
#include <vector>

class AbortPanel;
class CData;
class CNode;
class CNodeOp;
class GraphExecReporter;
class KIVError;
struct OpVisit;

/// Evaluates a graph from one output channel, frame after frame: set the request on
/// `inq_root_data()`, then `setup_data`, then `generate_data`. The graph is read once, at
/// construction: after an edit make a new one.
class GraphExec {
public:
    GraphExec(int requested_type, CNode* root, int channel);
    GraphExec(const GraphExec&) = delete;
    GraphExec& operator=(const GraphExec&) = delete;
    ~GraphExec();

    /// Hands the requests from the root to the leaves.
    void setup_data();

    /// Brings immediate and generated data from the leaves to the root, until `abort` stops it.
    void generate_data(AbortPanel* abort);

    /// Asks input `i` of `op` again and brings its immediate data up to the input. What it has
    /// answered to an equal request before still stands and is not computed again.
    void changed_request(int i, CNodeOp* op, AbortPanel* abort);

    /// The output of the root; null if it has none.
    CData* inq_root_data() const;

    /// A reporter stays its owner's.
    void register_reporter(GraphExecReporter* reporter);
    void unregister_reporter(GraphExecReporter* reporter);

    /// False means: stop the run.
    bool signal_exception(gsl::owner<KIVError*> error);
    void report_status(gsl::owner<KIVError*> status);

    /// Nodes that are disabled in this evaluation alone, by label.
    void set_disabled_nodes(const unsigned int* labels, int n);
    void clear_disabled_nodes();
    bool inq_is_disabled(unsigned int label) const;

    /// A restricted run computes only what feeds a selected channel.
    bool inq_is_restricted() const { return is_restricted; }
    void set_is_restricted(bool restricted) { is_restricted = restricted; }

    /// An interactive run computes only the ops that ask for it and the interactive node.
    bool inq_is_interactive() const { return is_interactive; }
    void set_is_interactive(bool interactive) { is_interactive = interactive; }
    int inq_interactive_node() const { return interactive_node; }
    void set_interactive_node(int label) { interactive_node = label; }

    bool inq_ignore_temp_disable() const { return ignore_temp_disable; }
    void set_ignore_temp_disable(bool ignore) { ignore_temp_disable = ignore; }

    /// For ops to consult; the run itself asks only its panel.
    bool inq_abort() const { return abort; }
    void set_abort(bool stop) { abort = stop; }

    /// The number of the run, from 1, which begins with its `setup_data`.
    unsigned long inq_run() const { return run; }

    /// As long as it is the same, so is what can be composited directly: through a generated
    /// phase. Outside of one each call gives a new number.
    unsigned long inq_direct_phase() { return generated_phase ? generated_phase : ++n_phases; }

    /// An array of ops was put in another order.
    void set_needs_reorder(bool needs) { needs_reorder = needs; }

private:
    GraphExec(CNode* root, int channel);

    bool inq_reports_status() const { return reporters && !is_interactive; }
    void reset_data(CNodeOp& op);
    void bring_immediate_data(AbortPanel* panel);
    void bring_generated_data(AbortPanel* panel);
    void reorder_graph();
    void rec_do_request(CNodeOp* op);
    void rec_do_immediate(CNodeOp* op, AbortPanel* panel);

    ObjectBlocks blocks; // where the ops and what is theirs lie
    bool is_restricted = false;
    bool is_interactive = false;
    bool ignore_temp_disable = true;
    bool needs_reorder = false;
    CNode* root_node; // not owned
    int root_channel;
    CNodeOp* root_op = nullptr; // one of `ops`
    bool abort = false;
    std::unique_ptr<KIVLinkedList> reporters; // refers to them
    std::vector<CNodeOp*> ops;                // owned; inputs before consumers
    std::vector<unsigned int> disabled_nodes; // sorted
    int interactive_node = 0;
    unsigned long run = 1;
    unsigned long n_phases = 0;
    unsigned long generated_phase = 0; // 0 outside of one
    std::vector<OpVisit> walk;         // the places of the walks that are under way
};
