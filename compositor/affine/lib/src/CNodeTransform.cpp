#include "compositor/affine/lib/hdr/CNodeTransform.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

CNodeTransform::CNodeTransform()
{
    add_labelled(POS_SUBCOL, new MoveColumn, "Move");
    add_labelled(ANGLE_SUBCOL, new AngleSubColumn, "Angle");
    add_labelled(SCALE_SUBCOL, new ScaleSubColumn, "Scale");
    add_labelled(CENTRE_SUBCOL, new NumericSubColumn(2), "Center");
}

bool CNodeTransform::load_finished_with_abort()
{
    const bool abort = XSNode::load_finished_with_abort();
    convert_old_position(POS_SUBCOL, OldPosition::X_AND_Y);
    return abort;
}

// The move stands inside the product, yet is free of scale and angle: it is turned and scaled back
// first.
Matrix44 CNodeTransform::inq_node_transform(int frame) const
{
    const Vector2 centre = inq_centre(frame);
    const double angle = inq_angle(frame);
    const double scale = inq_scale(frame);
    const Vector2 moved = (inq_translation(frame) + centre).rotate(-angle) * (1.0 / scale);

    Matrix33 move;
    Matrix33 turn;
    Matrix33 size;
    move.set_translation(moved - centre);
    turn.set_rotation(angle, Vector2());
    size.set_scale(Vector2(scale, scale));
    return Matrix44((size * turn) * move);
}

Vector2 CNodeTransform::inq_translation(int frame) const
{
    return inq_place(inq_pos_subcolumn(), frame);
}

Vector2 CNodeTransform::inq_offset(int frame) const
{
    return inq_translation(frame);
}

Vector2 CNodeTransform::inq_centre(int frame) const
{
    NumericSubColumn* centre = inq_centre_subcolumn();
    return {inq_value(centre, frame, 0.0, 0), inq_value(centre, frame, 0.0, 1)};
}

double CNodeTransform::inq_angle(int frame) const
{
    return inq_radians(inq_angle_subcolumn(), frame);
}

double CNodeTransform::inq_scale(int frame) const
{
    return inq_value(inq_scale_subcolumn(), frame, 1.0);
}
