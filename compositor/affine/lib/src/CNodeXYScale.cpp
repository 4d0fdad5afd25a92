#include "compositor/affine/lib/hdr/CNodeXYScale.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

CNodeXYScale::CNodeXYScale()
{
    add_labelled(1, new ScaleSubColumn, "X Scale");
    add_labelled(2, new ScaleSubColumn, "Y Scale");
}

CNodeXYScale::CNodeXYScale(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 1);
}

Matrix44 CNodeXYScale::inq_node_transform(int frame) const
{
    Matrix44 m;
    m.set_scale(Vector3(inq_x_scale(frame), inq_y_scale(frame), 1.0));
    return m;
}

double CNodeXYScale::inq_x_scale(int frame) const
{
    return inq_value(inq_x_scale_subcolumn(), frame, 1.0);
}

double CNodeXYScale::inq_y_scale(int frame) const
{
    return inq_value(inq_y_scale_subcolumn(), frame, 1.0);
}
