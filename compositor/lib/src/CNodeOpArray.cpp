#include "compositor/lib/hdr/CNodeOpArray.h"

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArraySet.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "kivlib/hdr/report_error.h"

CNodeOpArray::CNodeOpArray(int n, int type, bool selected)
    : n_nodes(std::max(n, 0)), nodes(static_cast<std::size_t>(n_nodes)),
      union_data(n_nodes > 1 ? CDataDescriptor::new_data(type) : nullptr), is_selected(selected)
{
    if (n_nodes > 1)
        order.reserve(nodes.size());
}

CNodeOpArray::~CNodeOpArray() = default;

CNodeOp* CNodeOpArray::inq_node_op(int i) const
{
    return 0 <= i && i < n_nodes ? nodes[static_cast<std::size_t>(i)] : nullptr;
}

void CNodeOpArray::set_nodeop(int i, CNodeOp* op)
{
    if (0 <= i && i < n_nodes)
        nodes[static_cast<std::size_t>(i)] = op;
}

CData* CNodeOpArray::inq_data() const
{
    return n_nodes == 1 ? inq_data(0) : union_data.get();
}

CData* CNodeOpArray::inq_data(int i) const
{
    const CNodeOp* op = inq_node_op(i);
    return op ? op->inq_output_data() : nullptr;
}

void CNodeOpArray::update_request_data()
{
    if (!union_data)
        return;
    for (const CNodeOp* op : nodes)
        if (CData* data = op ? op->inq_output_data() : nullptr)
            data->copy_request_data_from(union_data.get());
}

void CNodeOpArray::auto_union_immediate_data(AbortPanel* abort)
{
    if (!union_data)
        return;
    union_data->clear_immediate_data();
    union_data->union_immediate_data_from(this, abort);
}

void CNodeOpArray::auto_union_generated_data(AbortPanel* abort)
{
    if (!union_data)
        return;
    union_data->clear_generated_data();
    union_data->union_generated_data_from(this, abort);
}

void CNodeOpArray::auto_union_change_data()
{
    if (!union_data)
        return;
    union_data->clear_change_data();
    union_data->union_change_data_from(this);
}

void CNodeOpArray::clear_union_data()
{
    union_data.reset();
}

void CNodeOpArray::reset_union_data()
{
    has_cover = false;
    if (union_data)
        union_data->reset_data();
}

void CNodeOpArray::reorder(const IntArray* new_order, bool forget)
{
    if (!forget && inq_is_order(*new_order))
        return;
    if (!inq_is_permutation(*new_order)) {
        report_here() << "Program error.\n";
        return;
    }
    const Ops before = nodes;
    if (!forget)
        undo_order();
    const Ops old = nodes;
    order.resize(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        order[i] = new_order->inq_element(static_cast<int>(i));
        nodes[i] = old[static_cast<std::size_t>(order[i])];
    }
    CNodeOp* consumer = parent ? parent->inq_node() : nullptr;
    if (!consumer)
        return;
    if (nodes != before)
        consumer->forget_answers();
    if (GraphExec* graph = consumer->inq_graph())
        graph->set_needs_reorder(true);
}

void CNodeOpArray::undo_order()
{
    const Ops ordered = nodes;
    for (std::size_t i = 0; i < order.size(); ++i)
        nodes[static_cast<std::size_t>(order[i])] = ordered[i];
}

bool CNodeOpArray::inq_is_order(const IntArray& places) const
{
    if (order.empty() || places.size() != n_nodes)
        return false;
    for (int i = 0; i < n_nodes; ++i)
        if (places.inq_element(i) != order[static_cast<std::size_t>(i)])
            return false;
    return true;
}

bool CNodeOpArray::inq_is_permutation(const IntArray& places) const
{
    if (places.size() != n_nodes)
        return false;
    std::vector<bool> is_taken(nodes.size());
    for (int i = 0; i < n_nodes; ++i) {
        const int place = places.inq_element(i);
        if (place < 0 || place >= n_nodes || is_taken[static_cast<std::size_t>(place)])
            return false;
        is_taken[static_cast<std::size_t>(place)] = true;
    }
    return true;
}
