#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// The camera's width of old scenes. Unlike the camera of today it takes every width, 0 too.
class CNodeCameraSize : public CNodeAffineTransform {
    KIV_NODE(CNodeCameraSize, CNodeAffineTransform);

public:
    CNodeCameraSize();
    explicit CNodeCameraSize(KIVIStream& stream);

    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_width_subcolumn() const { return find_numeric(1); }
};
