#pragma once

#include "compositor/lib/hdr/NodeClass.h"
#include "xsheet/node/hdr/DWNode.h"

/// The output of a scene and root of its graph: what arrives here is the frame.
class CNodeRostrum : public DWNode {
    KIV_NODE(CNodeRostrum, DWNode);

public:
    CNodeRostrum() = default;
    explicit CNodeRostrum(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// Columns that an old file gave to its camera are dropped, with a warning.
    bool load_finished_with_abort() override;

    /// It shows no output, though the evaluation reads one.
    int inq_n_vis_output_channels() const override { return 0; }
    gsl::owner<CNodeOp*> new_nodeop(int type) override;

    /// Always: an empty scene is a scene.
    bool inq_is_fully_connected() const override { return true; }

private:
    template <class Record> void record(Record& r);
};
