#include "compositor/affine/lib/hdr/CNodeCamera.h"

#include "coversheet/lib/hdr/KIVCamera.h"
#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/Matrix.h"
#include "kivlib/hdr/report_error.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"

namespace {
constexpr double MINIMUM_WIDTH = 1e-10;
} // namespace

CNodeCamera::CNodeCamera()
{
    auto* width = new WidthSubColumn;
    add_labelled(POS_SUBCOL, new MoveColumn, "Move");
    add_labelled(ANGLE_SUBCOL, new AngleSubColumn, "Angle");
    add_labelled(WIDTH_SUBCOL, width, "Size");
    width->set_unit_type(KIV_UNIT_FIELD_WIDTH);
}

CNodeCamera::CNodeCamera(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 4);
}

bool CNodeCamera::load_finished_with_abort()
{
    const bool abort = XSNode::load_finished_with_abort();
    convert_old_position(POS_SUBCOL, OldPosition::X_AND_Y);
    return abort;
}

Matrix44 CNodeCamera::inq_node_transform(int frame) const
{
    const double scale = inq_camera_scale(frame);
    Matrix33 move;
    Matrix33 turn;
    Matrix33 size;
    move.set_translation(-inq_camera_position(frame));
    turn.set_rotation(-inq_camera_angle(frame), Vector2());
    size.set_scale(Vector2(scale, scale));
    return Matrix44((size * turn) * move);
}

Vector2 CNodeCamera::inq_offset(int frame) const
{
    return inq_translation(frame);
}

Vector2 CNodeCamera::inq_translation(int frame) const
{
    return inq_camera_position(frame);
}

Vector2 CNodeCamera::inq_camera_position(int frame) const
{
    return inq_place(inq_pos_subcolumn(), frame);
}

double CNodeCamera::inq_camera_angle(int frame) const
{
    return inq_radians(inq_angle_subcolumn(), frame);
}

double CNodeCamera::inq_camera_width(int frame) const
{
    constexpr double NOMINAL = KIVCamera::inq_nominal_camera_width();
    const double width = inq_value(inq_width_subcolumn(), frame, NOMINAL);
    if (width > MINIMUM_WIDTH)
        return width;
    report_here() << "Minimum camera width reached.\n";
    return NOMINAL;
}

double CNodeCamera::inq_camera_scale(int frame) const
{
    return KIVCamera::inq_nominal_camera_width() / inq_camera_width(frame);
}
