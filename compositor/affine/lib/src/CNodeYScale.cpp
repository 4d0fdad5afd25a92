#include "compositor/affine/lib/hdr/CNodeYScale.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

CNodeYScale::CNodeYScale()
{
    add_labelled(1, new ScaleSubColumn, "YScale");
}

Matrix44 CNodeYScale::inq_node_transform(int frame) const
{
    Matrix44 m;
    m.set_scale(Vector3(1.0, inq_scale(frame), 1.0));
    return m;
}

double CNodeYScale::inq_scale(int frame) const
{
    return inq_value(inq_scale_subcolumn(), frame, 1.0);
}
