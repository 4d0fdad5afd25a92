#include "compositor/lib/hdr/GraphExec.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/CNodeStatus.h"
#include "compositor/lib/hdr/GraphExecReporter.h"
#include "compositor/lib/src/OpTreeBuilder.h"
#include "compositor/lib/src/OpVisit.h"
#include "compositor/lib/src/fetch.h"
#include "kivlib/hdr/AbortPanel.h"

namespace {
bool inq_stops(AbortPanel* panel)
{
    return panel && panel->inq_abort();
}

/// The ops of a large graph and what is theirs are more than a cache holds: while one is in hand,
/// the next ones are fetched, and the nodes if they are read as well.
template <bool READS_NODES, class Iterator, class Work>
void for_each_op(Iterator op, Iterator end, const Work& work)
{
    constexpr std::ptrdiff_t MANY = 500; // fewer stay in the cache
    constexpr std::ptrdiff_t FAR = 12;
    constexpr std::ptrdiff_t NEAR = 8;
    constexpr std::ptrdiff_t NEXT = 4;
    constexpr std::size_t DATA = 256; // bytes; more of an image than a request touches
    if (end - op <= MANY) {
        std::all_of(op, end, work);
        return;
    }
    for (; op != end; ++op) {
        if (end - op > FAR)
            fetch(op[FAR], sizeof(CNodeOp));
        if (end - op > NEAR) {
            const CNodeOp& near = *op[NEAR];
            fetch(near.inq_node_data(), DATA);
            fetch(near.inq_nodeop_array_set(), sizeof(CNodeOpArraySet));
            if constexpr (READS_NODES)
                fetch(near.inq_node(), sizeof(CNode));
        }
        if constexpr (READS_NODES)
            if (const CNode* next = end - op > NEXT ? op[NEXT]->inq_node() : nullptr)
                fetch(next->inq_values(), OpTreeBuilder::VALUES);
        if (!work(*op))
            return;
    }
}

gsl::owner<KIVError*> copy_of(const KIVError& error)
{
    return static_cast<KIVError*>(error.clone());
}
} // namespace

GraphExec::GraphExec(CNode* root, int channel) : root_node(root), root_channel(channel) {}

// The ops that are finished are let go even if one of a module's can't be made.
GraphExec::GraphExec(int requested_type, CNode* root, int channel) : GraphExec(root, channel)
{
    const OpMemory::Use use(blocks);
    OpTreeBuilder builder(*this, ops);
    root_op = builder.build(requested_type, root, channel);
}

GraphExec::~GraphExec()
{
    for_each_op<false>(ops.begin(), ops.end(), [](CNodeOp* op) {
        delete op;
        return true;
    });
}

CData* GraphExec::inq_root_data() const
{
    return root_op ? root_op->inq_output_data() : nullptr;
}

void GraphExec::setup_data()
{
    if (inq_reports_status())
        report_status(new CNodeStatus);
    if (!root_op)
        return;
    ++run;
    root_op->set_quiescent(is_restricted);
    for_each_op<false>(ops.rbegin(), ops.rend(), [this](CNodeOp* op) {
        reset_data(*op);
        return true;
    });
    for_each_op<true>(ops.rbegin(), ops.rend(), [this](CNodeOp* op) {
        const CNodeOp* consumer = op == root_op ? nullptr : op->inq_consumer();
        op->do_setup_data(consumer ? consumer->inq_quiescent() : is_restricted);
        return true;
    });
}

/// The root keeps its data, since they hold the caller's request.
void GraphExec::reset_data(CNodeOp& op)
{
    if (CNodeOpArraySet* inputs = op.inq_nodeop_array_set())
        inputs->reset_union_data();
    if (&op == root_op)
        return;
    if (CData* data = op.inq_node_data())
        data->reset_data();
    if (CData* data = op.inq_converted_data())
        data->reset_data();
}

void GraphExec::generate_data(AbortPanel* panel)
{
    reorder_graph();
    if (!inq_stops(panel))
        bring_immediate_data(panel);
    reorder_graph();
    generated_phase = ++n_phases;
    if (!inq_stops(panel))
        bring_generated_data(panel);
    generated_phase = 0;
}

void GraphExec::bring_immediate_data(AbortPanel* panel)
{
    for_each_op<false>(ops.begin(), ops.end(), [panel](CNodeOp* op) {
        if (inq_stops(panel))
            return false;
        op->answer(panel);
        return true;
    });
}

void GraphExec::bring_generated_data(AbortPanel* panel)
{
    for_each_op<false>(ops.begin(), ops.end(), [this, panel](CNodeOp* op) {
        if (inq_stops(panel))
            return false;
        if (inq_reports_status())
            report_status(new CNodeStatus(op->inq_node_name()));
        op->generate_node_data(panel);
        return true;
    });
}

/// Brings the ops into the order that the arrays have taken on, inputs before consumers.
void GraphExec::reorder_graph()
{
    if (!needs_reorder || !root_op)
        return;
    needs_reorder = false;
    ops.clear();
    const std::size_t base = walk.size();
    walk.push_back({root_op});
    while (walk.size() > base) {
        if (CNodeOp* input = walk.back().next_input(true)) {
            walk.push_back({input});
        } else {
            ops.push_back(walk.back().op);
            walk.pop_back();
        }
    }
}

void GraphExec::changed_request(int i, CNodeOp* op, AbortPanel* panel)
{
    const CNodeOpArray* array = op->inq_inputs(i);
    const int n = array ? array->inq_n_nodes() : 0;
    op->forget_request();
    for (int k = 0; k < n; ++k)
        if (CNodeOp* input = array->inq_node_op(k); input && !input->take_earlier_answer())
            rec_do_request(input);
    for (int k = 0; k < n; ++k)
        if (CNodeOp* input = array->inq_node_op(k); input && input->awaits_answer)
            rec_do_immediate(input, panel);
}

/// Ends where an op has answered the same request already: all that feeds it would too.
void GraphExec::rec_do_request(CNodeOp* op)
{
    const std::size_t base = walk.size();
    op->take_request();
    walk.push_back({op});
    while (walk.size() > base) {
        CNodeOp* input = walk.back().next_input();
        if (!input) {
            walk.pop_back();
        } else if (!input->take_earlier_answer()) {
            input->take_request();
            walk.push_back({input});
        }
    }
}

/// An op may ask its own inputs again meanwhile: that walk stands above this one.
void GraphExec::rec_do_immediate(CNodeOp* op, AbortPanel* panel)
{
    const std::size_t base = walk.size();
    walk.push_back({op});
    while (walk.size() > base) {
        CNodeOp* input = walk.back().next_input();
        if (!input) {
            CNodeOp* ready = walk.back().op;
            walk.pop_back();
            ready->answer(panel);
        } else if (input->awaits_answer) {
            walk.push_back({input});
        }
    }
}

void GraphExec::register_reporter(GraphExecReporter* reporter)
{
    if (!reporters)
        reporters = std::make_unique<KIVLinkedList>();
    reporters->add(reporter);
}

void GraphExec::unregister_reporter(GraphExecReporter* reporter)
{
    if (!reporters)
        return;
    reporters->remove(reporter);
    if (reporters->inq_is_empty())
        reporters.reset();
}

bool GraphExec::signal_exception(gsl::owner<KIVError*> given)
{
    const std::unique_ptr<KIVError> error(given);
    bool goes_on = true;
    if (reporters)
        for (auto* reporter : reporters->of<GraphExecReporter>())
            goes_on &= reporter->signal_exception(copy_of(*error));
    return goes_on;
}

void GraphExec::report_status(gsl::owner<KIVError*> given)
{
    const std::unique_ptr<KIVError> status(given);
    if (reporters)
        for (auto* reporter : reporters->of<GraphExecReporter>())
            reporter->report_status(copy_of(*status));
}

void GraphExec::set_disabled_nodes(const unsigned int* labels, int n)
{
    disabled_nodes.assign(labels, labels + std::max(n, 0));
    std::ranges::sort(disabled_nodes);
}

void GraphExec::clear_disabled_nodes()
{
    disabled_nodes.clear();
}

bool GraphExec::inq_is_disabled(unsigned int label) const
{
    return std::ranges::binary_search(disabled_nodes, label);
}
