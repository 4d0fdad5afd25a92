#include "compositor/lib/hdr/DAGOpTypeChecker.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeChannel.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGOpNode.h"
#include "compositor/lib/src/type_sets.h"

namespace {
using Types = std::unique_ptr<cdata_tDArray>;

const cdata_tDArray* input_types(const DAGOpBottomUp& op, int i)
{
    return static_cast<const cdata_tDArray*>(op.inq_input(i));
}

cdata_tDArray* new_single_type(int type)
{
    auto* types = new cdata_tDArray;
    types->insert_tail(type);
    return types;
}
} // namespace

bool DAGOpDefaultTypeChecker::inq_input_passes(int i) const
{
    const cdata_tDArray* offered = input_types(*this, i);
    const CNodeChannel* channel = inq_node()->inq_c_node()->inq_inputs()->inq_channel(i);
    return !offered || inq_fits(*offered, channel->find_data_type());
}

void DAGOpDefaultTypeChecker::execute()
{
    const DAGOpNode& node = *inq_node();
    for (int i = 0; i < node.inq_n_input_channels(); ++i)
        if (!inq_input_passes(i)) {
            signal_exception(new DAGExecTCErrorType);
            return;
        }
    for (int i = 0; i < node.inq_n_output_channels(); ++i)
        set_output(
            i, new_single_type(node.inq_c_node()->inq_outputs()->inq_channel(i)->find_data_type()));
}

void DAGOpUniversalTypeChecker::type_intersect(cdata_tDArray* a, const cdata_tDArray* b)
{
    intersect_types(*a, *b);
}

gsl::owner<cdata_tDArray*> DAGOpUniversalTypeChecker::inq_all_types() const
{
    return generic ? inq_generic_types() : new cdata_tDArray(all_registered_types());
}

gsl::owner<cdata_tDArray*> DAGOpUniversalTypeChecker::inq_generic_types() const
{
    return new cdata_tDArray(generic_types_of(inq_node()->inq_c_node()->inq_desc()));
}

void DAGOpUniversalTypeChecker::restrict_to_generic(cdata_tDArray* types) const
{
    if (generic)
        type_intersect(types, Types(inq_generic_types()).get());
}

void DAGOpUniversalTypeChecker::set_all_outputs(cdata_tDArray* types, bool owned)
{
    const Types given(owned ? types : nullptr);
    const DAGOpNode& node = *inq_node();
    for (int i = 0; i < node.inq_n_output_channels(); ++i)
        set_output(i, new cdata_tDArray(*types));
    if (inq_store_result())
        store_types(*node.inq_c_node(), *types);
}

/// What the inputs have in common; null if nothing constrains any of them.
std::unique_ptr<cdata_tDArray>
DAGOpUniversalTypeChecker::intersect_inputs(bool with_conversions) const
{
    Types common;
    for (int i = 0; i < inq_node()->inq_n_input_channels(); ++i) {
        const cdata_tDArray* input = input_types(*this, i);
        if (!input)
            continue;
        auto types = std::make_unique<cdata_tDArray>(*input);
        if (with_conversions) {
            expand_by_conversions(*types);
            remove_wildcards(*types);
        }
        if (common)
            type_intersect(common.get(), types.get());
        else
            common = std::move(types);
    }
    return common;
}

void DAGOpUniversalTypeChecker::execute()
{
    Types types = intersect_inputs(false);
    if (!types) {
        set_all_outputs(inq_all_types(), true);
        return;
    }
    if (generic || inq_node()->inq_n_input_channels() > 1) {
        restrict_to_generic(types.get());
        if (types->empty()) {
            types = intersect_inputs(true);
            restrict_to_generic(types.get());
        }
        if (types->empty()) {
            signal_exception(new DAGExecTCErrorType);
            return;
        }
    }
    set_all_outputs(types.release(), true);
}
