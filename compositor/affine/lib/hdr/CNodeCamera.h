#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// What the camera sees: from world to camera space, so that the picture moves against the camera.
/// The camera has a place, an angle, and a width in world units.
class CNodeCamera : public CNodeAffineTransform {
    KIV_NODE(CNodeCamera, CNodeAffineTransform);

public:
    static constexpr unsigned long NUM_SUBCOLS = 5;
    static constexpr unsigned long XPOS_SUBCOL = 1; // in old files
    static constexpr unsigned long YPOS_SUBCOL = 2; // in old files
    static constexpr unsigned long ANGLE_SUBCOL = 3;
    static constexpr unsigned long WIDTH_SUBCOL = 4;
    static constexpr unsigned long POS_SUBCOL = 5;

    CNodeCamera();
    explicit CNodeCamera(KIVIStream& stream);

    bool load_finished_with_abort() override;
    Matrix44 inq_node_transform(int frame) const override;
    bool inq_is_camera() const override { return true; }
    bool inq_is_fielding() const override { return true; }

    virtual Vector2 inq_offset(int frame) const;
    virtual Vector2 inq_translation(int frame) const;

    MoveColumn* inq_pos_subcolumn() const { return find_move(POS_SUBCOL); }
    NumericSubColumn* inq_angle_subcolumn() const { return find_numeric(ANGLE_SUBCOL); }
    NumericSubColumn* inq_width_subcolumn() const { return find_numeric(WIDTH_SUBCOL); }

    Vector2 inq_camera_position(int frame) const;

    /// In radians.
    double inq_camera_angle(int frame) const;

    /// A width too small to be one is reported, and the nominal width is taken.
    double inq_camera_width(int frame) const;
    double inq_camera_scale(int frame) const;
};
