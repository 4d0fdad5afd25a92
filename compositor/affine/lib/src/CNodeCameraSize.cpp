#include "compositor/affine/lib/hdr/CNodeCameraSize.h"

#include "coversheet/lib/hdr/KIVCamera.h"
#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"

CNodeCameraSize::CNodeCameraSize()
{
    auto* width = new WidthSubColumn;
    add_labelled(1, width, "");
    width->set_unit_type(KIV_UNIT_FIELD_WIDTH);
}

CNodeCameraSize::CNodeCameraSize(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 1);
}

Matrix44 CNodeCameraSize::inq_node_transform(int frame) const
{
    constexpr double NOMINAL = KIVCamera::inq_nominal_camera_width();
    const double scale = NOMINAL / inq_value(inq_width_subcolumn(), frame, NOMINAL);
    Matrix33 size;
    size.set_scale(Vector2(scale, scale));
    return Matrix44(size);
}
