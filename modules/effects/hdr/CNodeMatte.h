#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

class NumericSubColumn;

/// Shows its first input where its second, the matte, is opaque: the alpha of the second is
/// multiplied in. With nothing connected to the second, the first passes as it is.
class CNodeMatte : public DWNode {
    KIV_NODE(CNodeMatte, DWNode);

public:
    CNodeMatte();
    explicit CNodeMatte(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_affine() const override { return false; }

    NumericSubColumn* inq_strength_subcolumn() const;
    NumericSubColumn* inq_invert_subcolumn() const;

    /// From 0, no matte, to 1.
    double inq_strength(int frame) const;

    /// From 0 to 1, where the first input shows outside of the matte.
    double inq_invert(int frame) const;
};
