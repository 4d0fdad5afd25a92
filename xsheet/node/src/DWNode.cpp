#include "xsheet/node/hdr/DWNode.h"

#include "kivlib/hdr/BoundingBox.h"
#include "kivlib/hdr/Matrix.h"

KIV_STORED_CLASS(DWNode, -1);

bool DWNode::inq_is_source_image_node() const
{
    return false;
}

bool DWNode::inq_is_lb_source_image_node() const
{
    return inq_is_source_image_node();
}

KIVPixmap* DWNode::create_dw_image(int)
{
    return nullptr;
}

BoundingBox DWNode::inq_bounding_box(int) const
{
    return {};
}

Matrix44 DWNode::inq_node_transform(int) const
{
    return {};
}

bool DWNode::inq_is_camera() const
{
    return false;
}

bool DWNode::inq_is_fielding() const
{
    return false;
}

double DWNode::inq_depth(int) const
{
    return 0.0;
}

bool DWNode::inq_has_clip_depth() const
{
    return false;
}

double DWNode::inq_clip_depth(int) const
{
    return 0.0;
}

bool DWNode::inq_is_affine() const
{
    return true;
}
