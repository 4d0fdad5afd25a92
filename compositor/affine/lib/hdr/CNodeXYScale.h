#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Scales across and up and down by a column each, about the origin.
class CNodeXYScale : public CNodeAffineTransform {
    KIV_NODE(CNodeXYScale, CNodeAffineTransform);

public:
    CNodeXYScale();
    explicit CNodeXYScale(KIVIStream& stream);

    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_x_scale_subcolumn() const { return find_numeric(1); }
    NumericSubColumn* inq_y_scale_subcolumn() const { return find_numeric(2); }
    double inq_x_scale(int frame) const;
    double inq_y_scale(int frame) const;
};
