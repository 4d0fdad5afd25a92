#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Moves, turns and scales all at once, about a centre that the move takes along.
class CNodeTransform : public CNodeAffineTransform {
    KIV_NODE(CNodeTransform, CNodeAffineTransform);

public:
    static constexpr unsigned long NUM_SUBCOLS = 6;
    static constexpr unsigned long XPOS_SUBCOL = 1; // in old files
    static constexpr unsigned long YPOS_SUBCOL = 2; // in old files
    static constexpr unsigned long ANGLE_SUBCOL = 3;
    static constexpr unsigned long SCALE_SUBCOL = 4;
    static constexpr unsigned long CENTRE_SUBCOL = 5;
    static constexpr unsigned long POS_SUBCOL = 6;

    CNodeTransform();
    explicit CNodeTransform(KIVIStream& stream) : CNodeAffineTransform(stream) {}

    bool load_finished_with_abort() override;
    Matrix44 inq_node_transform(int frame) const override;

    virtual Vector2 inq_translation(int frame) const;
    virtual Vector2 inq_offset(int frame) const;

    MoveColumn* inq_pos_subcolumn() const { return find_move(POS_SUBCOL); }
    NumericSubColumn* inq_angle_subcolumn() const { return find_numeric(ANGLE_SUBCOL); }
    NumericSubColumn* inq_scale_subcolumn() const { return find_numeric(SCALE_SUBCOL); }
    NumericSubColumn* inq_centre_subcolumn() const { return find_numeric(CENTRE_SUBCOL); }

    Vector2 inq_centre(int frame) const;

    /// In radians.
    double inq_angle(int frame) const;
    double inq_scale(int frame) const;
};
