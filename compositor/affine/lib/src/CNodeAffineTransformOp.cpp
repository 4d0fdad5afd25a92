#include "compositor/affine/lib/hdr/CNodeAffineTransformOp.h"

#include "compositor/affine/lib/hdr/CDataRender.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "xsheet/node/hdr/DWNode.h"

void CNodeAffineTransformOp::copy_node_info(CNode* node)
{
    if (const CData* output = inq_output_data())
        node_transform =
            static_cast<const DWNode*>(node)->inq_node_transform(output->inq_frameno());
}

void CNodeAffineTransformOp::copy_request_data_to_inputs()
{
    const CNodeOpArray* input = inq_inputs(0);
    auto* datum = static_cast<CDataRender*>(input ? input->inq_data() : nullptr);
    if (!datum || !inq_output_data())
        return;
    datum->copy_request_data_from(inq_output_data());
    datum->transform(node_transform);
}

// A quiescent transform still stands where it stands; a disabled one is not there at all.
void CNodeAffineTransformOp::disabled_copy_request_data_to_inputs()
{
    if (inq_state() == NODEOP_QUIESCENT)
        copy_request_data_to_inputs();
    else
        CNodeOp::disabled_copy_request_data_to_inputs();
}
