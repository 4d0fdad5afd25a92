#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Mirrors east and west.
class CNodeHorFlip : public CNodeAffineTransform {
    KIV_NODE(CNodeHorFlip, CNodeAffineTransform);

public:
    CNodeHorFlip() = default;
    explicit CNodeHorFlip(KIVIStream& stream) : CNodeAffineTransform(stream) {}

    Matrix44 inq_node_transform(int frame) const override;
};
