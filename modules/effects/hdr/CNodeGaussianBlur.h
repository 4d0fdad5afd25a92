#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

class NumericSubColumn;

/// Softens what it is fed by a Gaussian. The radius is a length of the artwork, so what is seen
/// twice as large is softened twice as far. Two standard deviations make the radius: so far from
/// an edge a fiftieth of it is left.
class CNodeGaussianBlur : public DWNode {
    KIV_NODE(CNodeGaussianBlur, DWNode);

public:
    CNodeGaussianBlur();
    explicit CNodeGaussianBlur(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_affine() const override { return false; }

    /// Null in a scene whose sheet lost it.
    NumericSubColumn* inq_radius_subcolumn() const;

    /// In node units; never below 0.
    double inq_radius(int frame) const;
};
