#include "compositor/affine/lib/hdr/CNodeScale.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"

CNodeScale::CNodeScale()
{
    add_labelled(1, new ScaleSubColumn, "Scale");
}

CNodeScale::CNodeScale(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 1);
}

Matrix44 CNodeScale::inq_node_transform(int frame) const
{
    const double scale = inq_scale(frame);
    Matrix44 m;
    m.set_scale(Vector3(scale, scale, 1.0));
    return m;
}

double CNodeScale::inq_scale(int frame) const
{
    return inq_value(inq_scale_subcolumn(), frame, 1.0);
}
