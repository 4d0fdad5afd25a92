#pragma once

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

/// Stands on the canvas for the nodes that are folded away in it, and passes any data on. Which
/// nodes those are, they know themselves.
class CNodeGroup : public DWNode {
    KIV_NODE(CNodeGroup, DWNode);

public:
    CNodeGroup() = default;
    explicit CNodeGroup(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int) override { return new CNodeNullOp(this); }
    bool inq_is_universal() const override { return true; }
};
