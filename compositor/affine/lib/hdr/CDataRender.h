#pragma once

#include "compositor/lib/hdr/CData.h"
#include "kivlib/hdr/IntBBox.h"
#include "kivlib/hdr/Matrix.h"

/// What all image-like data carry: down the graph the request (frame, depth, quality, the way to
/// the view and the area wanted), and up the graph what the node promises to cover. View space is
/// the pixels of the output, y upwards.
class CDataRender : public CData {
public:
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                   gsl::owner<IntArray*> order) override;
    void union_immediate_data_from(CData* input, AbortPanel* abort) override;
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort) override;
    using CData::union_change_data_from;
    void union_change_data_from(CData* input) override;
    void union_change_data_from(CNodeOpArray* inputs) override;
    void copy_request_data_from(CData* consumer) override;
    void copy_immediate_data_to(CData* consumer) override;
    void copy_change_data_to(CData* consumer) override;
    void clear_immediate_data() override;
    void clear_change_data() override;
    void delete_cache() override;
    int inq_frameno() const override { return frameno; }

    bool inq_is_colour() const { return is_colour; }
    bool inq_is_16_bps() const { return is_16_bps; }
    int inq_inkpaint_quality() const { return inkpaint_quality; }
    int inq_render_quality() const { return render_quality; }

    /// From the coordinates of the node that owns the datum to view space.
    const Matrix44& inq_node_to_view_transform() const { return node_to_view_transform; }

    /// On the way down the area wanted, on the way up the area that the node covers.
    const IntBBox& inq_image_ibbox_v() const { return image_ibbox_v; }
    bool inq_image_is_opaque() const { return image_is_opaque; }

    /// What has changed since the last evaluation.
    const IntBBox& inq_changed_area() const { return changed_area; }

    /// Alpha is a sample of its own, which an opaque image lacks.
    int inq_samples_per_pixel() const;
    int inq_bits_per_sample() const { return is_16_bps ? 16 : 8; }

    /// A new request; what an earlier one produced is gone. Of `quality` the render quality takes
    /// the low 16 bits.
    void set_request_data(int frame, bool colour, bool sixteen_bps, int quality,
                          const Matrix44& to_view, const IntBBox& wanted);
    void set_frameno(int frame) { frameno = frame; }
    void set_is_colour(bool colour) { is_colour = colour; }
    void set_inkpaint_quality(int quality) { inkpaint_quality = quality; }
    void set_opaque(bool opaque) { image_is_opaque = opaque; }
    void set_image_ibbox_v(const IntBBox& box) { image_ibbox_v = box; }
    void set_node_to_view_transform(const Matrix44& to_view) { node_to_view_transform = to_view; }

    /// Puts `m` before the way to the view.
    void transform(const Matrix44& m) { node_to_view_transform = node_to_view_transform * m; }
    void set_immediate_data(const IntBBox& covered, bool opaque);

protected:
    bool inq_is_asked_like(const CDataRender& other) const;

private:
    int find_topmost_cover(const CNodeOpArray& inputs, const IntArray& order, AbortPanel* abort);

    int frameno = 0;
    bool is_colour = false;
    bool is_16_bps = false;
    int inkpaint_quality = 0;
    int render_quality = 0;
    Matrix44 node_to_view_transform;
    IntBBox image_ibbox_v;
    bool image_is_opaque = false;
    IntBBox changed_area;
};
