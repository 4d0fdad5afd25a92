#pragma once

#include "compositor/lib/hdr/DAGOpGraph.h"
#include "kivlib/hdr/KIVString.h"

#include <memory>

class CNodeGraph;
class DAGExecReporter;
class DAGOpBottomUp;
class DAGOpTopDown;
class KIVError;
class KIVLinkedList;

/// One run of a named pass over a private mirror of the graph: construct, propose connections to
/// `inq_graph()`, `init`, `execute`.
class DAGExec {
public:
    /// A pass from the root to the leaves, or from the leaves to the root. The default stands in
    /// for a node that does not know the pass.
    DAGExec(CNodeGraph* c_graph, const KIVString& name, gsl::owner<DAGOpTopDown*> otherwise);
    DAGExec(CNodeGraph* c_graph, const KIVString& name, gsl::owner<DAGOpBottomUp*> otherwise);
    DAGExec(const DAGExec&) = delete;
    DAGExec& operator=(const DAGExec&) = delete;
    ~DAGExec();

    /// Sorts the mirror and sets the operators up. After a cycle there are none, so that `execute`
    /// then does nothing and succeeds: only a reporter hears of the cycle.
    void init();

    /// False if the pass failed. Results stored on real nodes by then stay there.
    bool execute();

    DAGOpGraph* inq_graph() const { return graph.get(); }
    bool inq_store_result() const { return store_result; }
    void set_store_result(bool store) { store_result = store; }
    DAGExecReporter* inq_reporter() const { return reporter; }
    void set_reporter(DAGExecReporter* to) { reporter = to; }

    /// Whether the pass has failed by this. A reporter takes the error over; without one it stays
    /// the caller's.
    bool signal_exception(KIVError* error);

    /// The same, but without a reporter the error is deleted.
    bool signal_and_drop(gsl::owner<KIVError*> error);

private:
    bool inq_is_bottom_up() const { return bu_default != nullptr; }
    void drop_ops();
    void set_ops();
    void set_ops_of(DAGOpNode& node);
    void execute_upwards(DAGOpNode& node);
    void execute_downwards(DAGOpNode& node);

    CNodeGraph* c_graph; // not owned
    std::unique_ptr<DAGOpGraph> graph;
    gsl::owner<DAGOpTopDown*> td_default = nullptr;
    gsl::owner<DAGOpBottomUp*> bu_default = nullptr;
    DAGExecReporter* reporter = nullptr; // not owned
    KIVString op_name;
    bool failed = false;
    bool store_result = false;
};
