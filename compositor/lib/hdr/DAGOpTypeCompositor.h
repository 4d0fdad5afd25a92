#pragma once

class cdata_tDArray;

#include "compositor/lib/hdr/DAGOpChannel.h"

/// Finds the data types that the connections of one input channel can be composited in.
class DAGOpTypeCompositor : public DAGOpChannelIn {
public:
    using DAGOpChannelIn::DAGOpChannelIn;

    void execute() override;

    /// Takes from `a` what is not in `b`.
    static void type_intersect(cdata_tDArray* a, const cdata_tDArray* b);
    static void remove_non_compositable_types(cdata_tDArray* types);

private:
    gsl::owner<cdata_tDArray*> intersect_inputs(bool with_conversions) const;
    bool inq_can_connect_multiple_inputs() const;
};
