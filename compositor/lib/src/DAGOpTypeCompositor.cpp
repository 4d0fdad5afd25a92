#include "compositor/lib/hdr/DAGOpTypeCompositor.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/src/type_sets.h"

void DAGOpTypeCompositor::type_intersect(cdata_tDArray* a, const cdata_tDArray* b)
{
    intersect_types(*a, *b);
}

void DAGOpTypeCompositor::remove_non_compositable_types(cdata_tDArray* types)
{
    keep_compositable_types(*types);
}

bool DAGOpTypeCompositor::inq_can_connect_multiple_inputs() const
{
    const CNode* node = inq_channel()->inq_node()->inq_c_node();
    return node->inq_can_connect_multiple_inputs(inq_channel()->inq_index());
}

/// What the connections have in common; null if nothing constrains any of them.
std::unique_ptr<cdata_tDArray> DAGOpTypeCompositor::intersect_inputs(bool with_conversions) const
{
    std::unique_ptr<cdata_tDArray> common;
    for (const auto* connection : inq_channel()->inq_connections_list()->of<DAGOpConnection>()) {
        const KIVObject* data = connection->inq_output_channel()->inq_data();
        if (!data)
            continue;
        auto types = std::make_unique<cdata_tDArray>(*static_cast<const cdata_tDArray*>(data));
        if (with_conversions)
            expand_by_conversions(*types);
        if (common)
            type_intersect(common.get(), types.get());
        else
            common = std::move(types);
    }
    return common;
}

void DAGOpTypeCompositor::execute()
{
    const int n = inq_channel()->inq_connections_list()->count();
    auto types = intersect_inputs(false);
    if (n > 1 && types && !types->empty() && !inq_can_connect_multiple_inputs())
        remove_non_compositable_types(types.get());
    if (n > 1 && types && types->empty())
        types = composite_converted();
    inq_channel()->set_data(types.release());
}

std::unique_ptr<cdata_tDArray> DAGOpTypeCompositor::composite_converted()
{
    auto types = intersect_inputs(true);
    if (types->empty()) {
        signal_exception(new DAGExecTCErrorType);
        return nullptr;
    }
    remove_non_compositable_types(types.get());
    if (types->empty()) {
        signal_exception(new DAGExecTCErrorComposite);
        return nullptr;
    }
    return types;
}
