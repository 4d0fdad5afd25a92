#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Scales both ways alike, about the origin.
class CNodeScale : public CNodeAffineTransform {
    KIV_NODE(CNodeScale, CNodeAffineTransform);

public:
    CNodeScale();
    explicit CNodeScale(KIVIStream& stream);

    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_scale_subcolumn() const { return find_numeric(1); }
    double inq_scale(int frame) const;
};
