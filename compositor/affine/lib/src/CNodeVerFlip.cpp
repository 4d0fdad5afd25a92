#include "compositor/affine/lib/hdr/CNodeVerFlip.h"

#include "kivlib/hdr/Matrix.h"

Matrix44 CNodeVerFlip::inq_node_transform(int) const
{
    Matrix44 m;
    m.set_scale(Vector3(1.0, -1.0, 1.0));
    return m;
}
