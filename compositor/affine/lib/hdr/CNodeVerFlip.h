#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Mirrors north and south.
class CNodeVerFlip : public CNodeAffineTransform {
    KIV_NODE(CNodeVerFlip, CNodeAffineTransform);

public:
    CNodeVerFlip() = default;
    explicit CNodeVerFlip(KIVIStream& stream) : CNodeAffineTransform(stream) {}

    Matrix44 inq_node_transform(int frame) const override;
};
