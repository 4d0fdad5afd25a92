#pragma once

#include "compositor/lib/hdr/CNodeOp.h"
#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/Vector.h"

class BoundingBox;
class KIVRectangle;
class Matrix44;

/// Draws the image of a frame where the transforms above have put it, resampled once.
class CNodeRasterImageOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void copy_node_info(CNode* node) override;
    void init_data(AbortPanel* abort) override;
    void generate_data(AbortPanel* abort) override;
    bool inq_can_composite() override { return true; }
    bool inq_interactive() override { return true; }

    /// The file of this frame, for reports.
    const KIVString& inq_filename() const { return filename; }

private:
    /// In node space; empty without a usable image.
    BoundingBox inq_image_bounds(int bits) const;
    void place_corners(const KIVRectangle& bounds, const Matrix44& to_view);

    static constexpr int N_CORNERS = 4;

    Vector2 corners[N_CORNERS]; // in view space: top left, top right, bottom right, bottom left
    int mipmap_id = -1;         // -1: no image shows
    KIVString filename;
};
