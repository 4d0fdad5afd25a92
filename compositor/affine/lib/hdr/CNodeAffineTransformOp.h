#pragma once

#include "compositor/lib/hdr/CNodeOp.h"
#include "kivlib/hdr/Matrix.h"

/// Folds the matrix of its node into the request; all else it hands on. Serves every data type
/// that derives from CDataRender.
class CNodeAffineTransformOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    /// The node is a DWNode.
    void copy_node_info(CNode* node) override;
    void copy_request_data_to_inputs() override;
    void disabled_copy_request_data_to_inputs() override;
    bool inq_composite_through() override { return true; }
    bool inq_interactive() override { return true; }

private:
    Matrix44 node_transform;
};
