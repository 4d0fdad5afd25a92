#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Scales up and down, about the origin.
class CNodeYScale : public CNodeAffineTransform {
    KIV_NODE(CNodeYScale, CNodeAffineTransform);

public:
    CNodeYScale();
    explicit CNodeYScale(KIVIStream& stream) : CNodeAffineTransform(stream) {}

    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_scale_subcolumn() const { return find_numeric(1); }
    double inq_scale(int frame) const;
};
