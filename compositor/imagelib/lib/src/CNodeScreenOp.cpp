#include "compositor/imagelib/lib/hdr/CNodeScreenOp.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeScreenBase.h"

void CNodeScreenOp::copy_node_info(CNode* node)
{
    if (const CDataImage* output = CDataImage::from(inq_node_data()))
        colour = static_cast<const CNodeScreenBase*>(node)->inq_colour(output->inq_frameno());
    if (inq_state() == NODEOP_ACTIVE)
        promise_cover();
}

void CNodeScreenOp::init_data(AbortPanel*)
{
    if (CDataImage* output = CDataImage::from(inq_node_data()))
        output->set_opaque(true);
}

void CNodeScreenOp::generate_data(AbortPanel*)
{
    CDataImage* output = CDataImage::from(inq_node_data());
    if (!output || output->inq_image_ibbox_v().inq_is_empty() || !output->inq_is_colour())
        return;
    CDataImage* target = CDataImage::from(inq_composite_output(output->inq_type()));
    if (!target)
        return;
    delete target->extract_pixmap();
    target->create_pixmap(colour, output->inq_is_16_bps() ? PT_RGBA_16 : PT_RGBA_8);
    output->set_did_composite();
}
