#include "compositor/imagelib/lib/hdr/CNodeRasterImageOp.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/imagelib/lib/src/LockedMipMap.h"
#include "kivlib/hdr/BoundingBox.h"
#include "kivlib/hdr/Matrix.h"

void CNodeRasterImageOp::copy_node_info(CNode* node)
{
    const CDataImage* output = CDataImage::from(inq_node_data());
    if (!output)
        return;
    const auto* image = static_cast<const CNodeRasterImage*>(node);
    const int frame = output->inq_frameno();
    filename = image->inq_filename(frame);
    mipmap_id = image->inq_mipmap_id(frame, output->inq_bits_per_sample());
}

BoundingBox CNodeRasterImageOp::inq_image_bounds(int bits) const
{
    const LockedMipMap image(bits, mipmap_id);
    return image.is_usable() ? BoundingBox(image->get_frame()) : BoundingBox();
}

// An image is never opaque: its alpha is not looked at here. One that is going to be culled may lie
// anywhere meanwhile, so that its file stays closed.
void CNodeRasterImageOp::init_data(AbortPanel*)
{
    CDataImage* output = CDataImage::from(inq_node_data());
    if (!output)
        return;
    if (mipmap_id < 0) {
        output->clear_immediate_data();
        return;
    }
    if (output->inq_image_ibbox_v().inq_is_empty() || inq_is_under_cover())
        return;
    const BoundingBox bounds = inq_image_bounds(output->inq_bits_per_sample());
    if (bounds.inq_is_empty())
        return;
    place_corners(bounds.inq_rectangle(), output->inq_node_to_view_transform());
    IntBBox covered(IntRect::roundout(KIVRectangle(N_CORNERS, corners)));
    covered.set_intersection(output->inq_image_ibbox_v());
    output->set_immediate_data(covered, false);
}

void CNodeRasterImageOp::place_corners(const KIVRectangle& bounds, const Matrix44& to_view)
{
    corners[0] = to_view * bounds.get_top_left();
    corners[1] = to_view * bounds.get_top_right();
    corners[2] = to_view * bounds.get_bottom_right();
    corners[3] = to_view * bounds.get_bottom_left();
}

void CNodeRasterImageOp::generate_data(AbortPanel*)
{
    CDataImage* output = CDataImage::from(inq_node_data());
    if (!output || mipmap_id < 0 || output->inq_image_ibbox_v().inq_is_empty())
        return;
    const LockedMipMap image(output->inq_bits_per_sample(), mipmap_id);
    CDataImage* target = CDataImage::from(inq_composite_output(output->inq_type()));
    if (!image.is_usable() || !target)
        return;
    place_corners(image->get_frame(), output->inq_node_to_view_transform());
    const Vector2 corner(target->inq_image_ibbox_v().inq_rectangle().get_bottom_left());
    Vector2 local[N_CORNERS];
    for (int i = 0; i < N_CORNERS; ++i)
        local[i] = corners[i] - corner;
    KIVPixmap* pixmap = target->create_pixmap(output->inq_is_16_bps() ? PT_RGBA_16 : PT_RGBA_8);
    output->composite_generated_data(image.inq_mip_map(), local, pixmap);
}
