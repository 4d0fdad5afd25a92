#include "compositor/affine/lib/hdr/CNodeXScale.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

CNodeXScale::CNodeXScale()
{
    add_labelled(1, new ScaleSubColumn, "XScale");
}

Matrix44 CNodeXScale::inq_node_transform(int frame) const
{
    Matrix44 m;
    m.set_scale(Vector3(inq_scale(frame), 1.0, 1.0));
    return m;
}

double CNodeXScale::inq_scale(int frame) const
{
    return inq_value(inq_scale_subcolumn(), frame, 1.0);
}
