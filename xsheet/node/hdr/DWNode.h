#pragma once

#include "xsheet/node/hdr/XSNode.h"

class BoundingBox;
class KIVPixmap;
class Matrix44;

/// A node as the drawing window asks for it: what it shows, where, how it moves things, and how
/// near it lies. Each answer is for one frame and neutral unless a node says otherwise.
class DWNode : public XSNode {
    KIV_STORED_ABSTRACT(DWNode, XSNode);

public:
    DWNode() = default;
    explicit DWNode(gsl::owner<Column*> column) : XSNode(column) {}
    explicit DWNode(KIVIStream& stream) : XSNode(stream) {}

    virtual bool inq_is_source_image_node() const;
    virtual bool inq_is_lb_source_image_node() const;

    /// The node's picture for the window, or null.
    virtual KIVPixmap* create_dw_image(int frame);
    virtual BoundingBox inq_bounding_box(int frame) const;

    /// From the node's input space to its output space.
    virtual Matrix44 inq_node_transform(int frame) const;
    virtual bool inq_is_camera() const;
    virtual bool inq_is_fielding() const;
    virtual double inq_depth(int frame) const;
    virtual bool inq_has_clip_depth() const;
    virtual double inq_clip_depth(int frame) const;
    virtual bool inq_is_affine() const;
};
