#include "compositor/imagelib/lib/hdr/EffectData.h"

namespace {
KIVRectangle make_rectangle(const IntRect& area)
{
    return {Vector2(area.get_bottom_left()), Vector2(area.get_top_right())};
}
} // namespace

void EffectData::set_node_transform(const Matrix44& view_to_effect)
{
    node_transform = view_to_effect;
    update_transforms();
}

void EffectData::set_view_to_node_transform(const Matrix44& to_view, const IntRect& output_area)
{
    view_to_node_transform = to_view;
    view_rect = output_area;
    update_transforms();
}

void EffectData::update_transforms()
{
    node_to_effect_transform = node_transform * view_to_node_transform;
}

Vector2 EffectData::inq_effect_border() const
{
    if (pixel_border != IntVector2())
        return Vector2(pixel_border);
    const Vector2 origin = node_to_effect_transform * Vector2();
    const Vector2 across = node_to_effect_transform * Vector2(node_border.x(), 0.0);
    const Vector2 up = node_to_effect_transform * Vector2(0.0, node_border.y());
    return {across.distance(origin), up.distance(origin)};
}

IntVector2 EffectData::inq_int_effect_border() const
{
    return pixel_border != IntVector2() ? pixel_border : IntVector2::roundup(inq_effect_border());
}

KIVRectangle EffectData::convert_rect_to_effect_space(const KIVRectangle& in_view) const
{
    return node_transform * in_view;
}

IntRect EffectData::convert_irect_to_effect_space(const IntRect& in_view) const
{
    return IntRect::roundout(convert_rect_to_effect_space(make_rectangle(in_view)));
}

IntBBox EffectData::convert_ibbox_to_output_space(const IntBBox& in_effect) const
{
    Matrix44 to_view = node_transform;
    if (in_effect.inq_is_empty() || !to_view.invert())
        return {};
    return IntBBox(IntRect::roundout(to_view * make_rectangle(in_effect.inq_rectangle())));
}
