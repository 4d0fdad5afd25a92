#pragma once

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

/// Passes any data on as they are.
class CNodeNullTransform : public DWNode {
    KIV_NODE(CNodeNullTransform, DWNode);

public:
    CNodeNullTransform() = default;
    explicit CNodeNullTransform(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int) override { return new CNodeNullOp(this); }
    bool inq_is_universal() const override { return true; }
};
