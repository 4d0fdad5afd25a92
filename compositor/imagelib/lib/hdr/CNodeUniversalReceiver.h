#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

/// The far end of a link whose line is hidden: see `CNodeUniversalTransmitter`.
class CNodeUniversalReceiver : public DWNode {
    KIV_NODE(CNodeUniversalReceiver, DWNode);

public:
    CNodeUniversalReceiver();
    explicit CNodeUniversalReceiver(KIVIStream& stream) : DWNode(stream) {}

    /// The line is shown while one end of it is selected.
    int inq_n_vis_input_channels() const override;

    /// Not by hand.
    bool inq_can_connect_to_input_chans() const override { return false; }
    void input_connections_changed() override { update_name(); }
    gsl::owner<CNodeOp*> new_nodeop(int type) override;

    /// None: no walk down the graph crosses the link.
    gsl::owner<KIVLinkedList*> inq_descendents(bool include_hidden,
                                               bool through_collapsed) const override;
    bool inq_is_universal() const override { return true; }

    /// What feeds it, or null.
    CNode* inq_transmitter() const;

    /// Takes the transmitter's title over.
    void update_name();
};
