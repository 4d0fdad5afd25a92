#pragma once

#include "compositor/lib/hdr/CNodeOp.h"
#include "kivlib/hdr/KIVColour.h"

/// Fills the shared target with a screen's colour. A screen is opaque to culling whatever its
/// alpha, so nothing lies under it: it replaces what a target held.
class CNodeScreenOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void copy_node_info(CNode* node) override;
    void init_data(AbortPanel* abort) override;

    /// A grey render leaves screens out.
    void generate_data(AbortPanel* abort) override;
    bool inq_can_composite() override { return true; }
    bool inq_interactive() override { return true; }

private:
    KIVColour colour;
};
