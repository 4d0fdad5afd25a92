#include "compositor/lib/hdr/DAGExec.h"

#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGExecReporter.h"
#include "compositor/lib/hdr/DAGOpNode.h"

namespace {
/// Stands where no default was given, and tells the direction of the pass. It is no object.
constexpr std::uintptr_t NO_DEFAULT = 200;

template <class Op> Op* given_or_placeholder(Op* op)
{
    return op ? op : reinterpret_cast<Op*>(NO_DEFAULT);
}

template <class Op> Op* given_or_null(Op* op)
{
    return op == reinterpret_cast<Op*>(NO_DEFAULT) ? nullptr : op;
}
} // namespace

DAGExec::DAGExec(CNodeGraph* c_graph, const KIVString& name, gsl::owner<DAGOpTopDown*> otherwise)
    : c_graph(c_graph), graph(std::make_unique<DAGOpGraph>(c_graph)),
      td_default(given_or_placeholder(otherwise)), op_name(name)
{}

DAGExec::DAGExec(CNodeGraph* c_graph, const KIVString& name, gsl::owner<DAGOpBottomUp*> otherwise)
    : c_graph(c_graph), graph(std::make_unique<DAGOpGraph>(c_graph)),
      bu_default(given_or_placeholder(otherwise)), op_name(name)
{}

DAGExec::~DAGExec()
{
    graph.reset();
    delete given_or_null(td_default);
    delete given_or_null(bu_default);
}

void DAGExec::init()
{
    if (graph->top_sort_nodes()) {
        set_ops();
        return;
    }
    drop_ops();
    signal_and_drop(new DAGExecTCErrorCyclic);
}

void DAGExec::drop_ops()
{
    for (DAGOpNode* node : graph->inq_nodes_list()->of<DAGOpNode>())
        node->drop_all_ops();
}

void DAGExec::set_ops()
{
    for (DAGOpNode* node : graph->inq_nodes_list()->of<DAGOpNode>())
        set_ops_of(*node);
}

void DAGExec::set_ops_of(DAGOpNode& node)
{
    if (inq_is_bottom_up())
        node.set_op(op_name, given_or_null(bu_default));
    else
        node.set_op(op_name, given_or_null(td_default));
    node.set_exec(this);
    const DAGOpChannelSet* channels = inq_is_bottom_up() ? node.inq_inputs() : node.inq_outputs();
    for (int i = 0; channels && i < channels->inq_n_channels(); ++i) {
        DAGOpChannel& channel = *channels->inq_channel(i);
        if (inq_is_bottom_up())
            channel.set_op(op_name, static_cast<DAGOpChannelIn*>(nullptr));
        else
            channel.set_op(op_name, static_cast<DAGOpChannelOut*>(nullptr));
        channel.set_exec(this);
    }
}

bool DAGExec::execute()
{
    failed = false;
    for (DAGOpNode* node : graph->inq_nodes_list()->of<DAGOpNode>()) {
        if (failed)
            break;
        if (inq_is_bottom_up())
            execute_upwards(*node);
        else
            execute_downwards(*node);
    }
    return !failed;
}

void DAGExec::execute_upwards(DAGOpNode& node)
{
    for (int i = 0; i < node.inq_n_input_channels() && !failed; ++i)
        node.inq_inputs()->inq_channel(i)->execute();
    if (!failed)
        node.execute();
}

void DAGExec::execute_downwards(DAGOpNode& node)
{
    node.execute();
    for (int i = 0; i < node.inq_n_output_channels() && !failed; ++i)
        node.inq_outputs()->inq_channel(i)->execute();
}

bool DAGExec::signal_exception(KIVError* error)
{
    failed = !reporter || !reporter->signal_exception(error);
    return failed;
}

bool DAGExec::signal_and_drop(gsl::owner<KIVError*> error)
{
    const std::unique_ptr<KIVError> unheard(reporter ? nullptr : error);
    return signal_exception(error);
}
