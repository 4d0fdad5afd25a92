#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Turns about the origin, counter-clockwise.
class CNodeRotate : public CNodeAffineTransform {
    KIV_NODE(CNodeRotate, CNodeAffineTransform);

public:
    CNodeRotate();
    explicit CNodeRotate(KIVIStream& stream);

    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_angle_subcolumn() const { return find_numeric(1); }

    /// In radians.
    double inq_angle(int frame) const;
    Vector2 inq_centre(int) const { return {0.0, 0.0}; }
};
