#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

class CNodeUniversalReceiver;

/// The near end of a link across the graph whose line is hidden: an ordinary connection leads from
/// it to its receiver. Both bear one title, the header text of their sub-columns.
class CNodeUniversalTransmitter : public DWNode {
    KIV_NODE(CNodeUniversalTransmitter, DWNode);

public:
    CNodeUniversalTransmitter();
    explicit CNodeUniversalTransmitter(KIVIStream& stream) : DWNode(stream) {}

    void input_connections_changed() override { update_name(); }
    void input_connections_updated() override;
    gsl::owner<CNodeOp*> new_nodeop(int type) override;
    bool inq_is_universal() const override { return true; }

    /// The first that it leads to, or null.
    CNodeUniversalReceiver* inq_receiver() const;

    /// Without a title it takes the names of what it transmits.
    void update_name();
};
