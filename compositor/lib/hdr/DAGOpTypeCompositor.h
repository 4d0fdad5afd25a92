#pragma once

#include "compositor/lib/hdr/DAGOpChannel.h"

class cdata_tDArray;

/// Finds the data types that the connections of one input channel can be composited in.
class DAGOpTypeCompositor : public DAGOpChannelIn {
public:
    using DAGOpChannelIn::DAGOpChannelIn;

    void execute() override;

    /// Takes from `a` what is not in `b`.
    static void type_intersect(cdata_tDArray* a, const cdata_tDArray* b);
    static void remove_non_compositable_types(cdata_tDArray* types);

private:
    std::unique_ptr<cdata_tDArray> intersect_inputs(bool with_conversions) const;
    std::unique_ptr<cdata_tDArray> composite_converted();
    bool inq_can_connect_multiple_inputs() const;
};
