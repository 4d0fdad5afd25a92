#pragma once

#include "compositor/lib/hdr/DAGOpBase.h"

#include <memory>

class cdata_tDArray;

/// Checks an ordinary node: each input must carry the channel's data type or one that converts to
/// it. Each output then carries its own channel's type alone.
class DAGOpDefaultTypeChecker : public DAGOpBottomUp {
public:
    using DAGOpBottomUp::DAGOpBottomUp;

    void execute() override;

private:
    bool inq_input_passes(int i) const;
};

/// Passes on what the inputs of a universal node have in common. A generic node passes on only
/// the data types that its class has operations for.
class DAGOpUniversalTypeChecker : public DAGOpBottomUp {
public:
    DAGOpUniversalTypeChecker(DAGOpNode* node, bool generic) : DAGOpBottomUp(node), generic(generic)
    {}

    void execute() override;

    /// Takes from `a` what is not in `b`.
    static void type_intersect(cdata_tDArray* a, const cdata_tDArray* b);

    gsl::owner<cdata_tDArray*> inq_all_types() const;
    gsl::owner<cdata_tDArray*> inq_generic_types() const;
    void restrict_to_generic(cdata_tDArray* types) const;

    /// A copy for each output, and one for the real node if the pass stores its result. `owned`
    /// says that `types` is this operation's to delete.
    void set_all_outputs(cdata_tDArray* types, bool owned);

private:
    std::unique_ptr<cdata_tDArray> intersect_inputs(bool with_conversions) const;

    bool generic;
};
