#include "compositor/affine/lib/hdr/CNodeCameraRotate.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"

CNodeCameraRotate::CNodeCameraRotate()
{
    add_labelled(1, new AngleSubColumn, "");
}

CNodeCameraRotate::CNodeCameraRotate(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 1);
}

Matrix44 CNodeCameraRotate::inq_node_transform(int frame) const
{
    Matrix33 turn;
    turn.set_rotation(-inq_angle(frame), inq_centre(frame));
    return Matrix44(turn);
}

double CNodeCameraRotate::inq_angle(int frame) const
{
    return inq_radians(inq_angle_subcolumn(), frame);
}
