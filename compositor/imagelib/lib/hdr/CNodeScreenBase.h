#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "kivlib/hdr/KIVColour.h"
#include "xsheet/node/hdr/DWNode.h"

/// A source of one flat colour that fills all that is asked for. Its class record is kept where
/// DWNode keeps its own, so the two are looked up in one place.
class CNodeScreenBase : public DWNode {
public:
    using Self = CNodeScreenBase;
    using Base = DWNode;

    static constexpr const char* inq_class_name_s() { return "CNodeScreenBase"; }
    static constexpr const char* inq_base_name_s() { return "DWNode"; }
    const char* class_name() const override { return inq_class_name_s(); }

    CNodeScreenBase() = default;
    explicit CNodeScreenBase(KIVIStream& stream) : DWNode(stream) {}

    void storer(KIVOStream& stream) override { DWNode::storer(stream); }
    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_lb_source_image_node() const override { return true; }

    virtual KIVColour inq_colour(int frame) const = 0;
};
