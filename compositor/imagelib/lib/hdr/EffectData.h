#pragma once

#include "kivlib/hdr/IntBBox.h"
#include "kivlib/hdr/Matrix.h"

/// What an effect needs of one input beyond what it delivers, and where: a blur reads past the edge
/// of what it writes. Effect space is the space in which the input is wanted; it is view space
/// unless the effect sets a transform.
class EffectData {
public:
    const Vector2& inq_node_border() const { return node_border; }
    const Matrix44& inq_node_transform() const { return node_transform; }
    const Matrix44& inq_node_to_effect_transform() const { return node_to_effect_transform; }

    /// In the input's padded pixmap, rows from the top: it begins with what the input delivered.
    const IntRect& inq_process_rect() const { return process_rect; }

    /// In node units; it rules while the border in pixels is (0, 0), and grows with zoom.
    void set_node_border(const Vector2& border) { node_border = border; }
    void set_pixel_border(const IntVector2& border) { pixel_border = border; }

    /// From view space to effect space.
    void set_node_transform(const Matrix44& view_to_effect);

    /// The output's own way to the view, and the area that is wanted of it.
    void set_view_to_node_transform(const Matrix44& to_view, const IntRect& output_area);
    void set_process_rect(const IntRect& area) { process_rect = area; }

    /// In pixels of effect space.
    Vector2 inq_effect_border() const;
    IntVector2 inq_int_effect_border() const;

    KIVRectangle convert_rect_to_effect_space(const KIVRectangle& in_view) const;

    /// Rounded out to whole pixels, as is the next.
    IntRect convert_irect_to_effect_space(const IntRect& in_view) const;

    /// Empty also where effect space has no area in the view.
    IntBBox convert_ibbox_to_output_space(const IntBBox& in_effect) const;

private:
    void update_transforms();

    IntVector2 pixel_border;
    Vector2 node_border;
    Matrix44 node_transform;
    Matrix44 view_to_node_transform; // the output's way from its node to the view
    Matrix44 node_to_effect_transform;
    IntRect process_rect;
    IntRect view_rect;
};
