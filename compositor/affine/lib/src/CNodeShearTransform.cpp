#include "compositor/affine/lib/hdr/CNodeShearTransform.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

namespace {
constexpr double LEAST_SCALE = -1e14;
}

CNodeShearTransform::CNodeShearTransform()
{
    add_labelled(XPOS_SUBCOL, new NumericXSubColumn, "E/W");
    add_labelled(YPOS_SUBCOL, new NumericYSubColumn, "N/S");
    add_labelled(ANGLE_SUBCOL_Z, new AngleSubColumn, "Angle");
    add_labelled(SCALE_SUBCOL_X, new ScaleSubColumn, "X Scale");
    add_labelled(SCALE_SUBCOL_Y, new ScaleSubColumn, "Y Scale");
    add_labelled(SHEAR_SUBCOL, new AngleSubColumn, "Shear");
    let_scales_mirror();
}

// Scale columns come out of a file with the limit of ordinary scales.
bool CNodeShearTransform::load_finished_with_abort()
{
    if (XSNode::load_finished_with_abort())
        return true;
    let_scales_mirror();
    return false;
}

void CNodeShearTransform::let_scales_mirror()
{
    const Vector least(Vector2(LEAST_SCALE, LEAST_SCALE));
    for (NumericSubColumn* scale : {inq_scale_x_subcolumn(), inq_scale_y_subcolumn()})
        if (scale)
            scale->set_minimum_values(least);
}

Matrix44 CNodeShearTransform::inq_node_transform(int frame) const
{
    const Vector2 scale = inq_scale(frame);
    Matrix33 move;
    Matrix33 turn;
    Matrix33 size;
    Matrix33 shear;
    move.set_translation(inq_translate(frame));
    turn.set_rotation(inq_radians(inq_z_angle_subcolumn(), frame), Vector2());
    size.set_scale(Vector3(scale.x(), scale.y(), 1.0));
    shear(0, 1) = inq_shear(frame);
    return Matrix44(move * ((shear * size) * turn));
}

Vector2 CNodeShearTransform::inq_translate(int frame) const
{
    return {inq_value(inq_x_translate_subcolumn(), frame, 0.0),
            inq_value(inq_y_translate_subcolumn(), frame, 0.0)};
}

double CNodeShearTransform::inq_z_angle(int frame) const
{
    return inq_value(inq_z_angle_subcolumn(), frame, 0.0);
}

Vector2 CNodeShearTransform::inq_scale(int frame) const
{
    return {inq_value(inq_scale_x_subcolumn(), frame, 1.0),
            inq_value(inq_scale_y_subcolumn(), frame, 1.0)};
}

double CNodeShearTransform::inq_shear(int frame) const
{
    return -std::tan(inq_radians(inq_shear_subcolumn(), frame));
}
