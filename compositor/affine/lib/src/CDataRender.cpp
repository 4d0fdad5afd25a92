#include "compositor/affine/lib/hdr/CDataRender.h"

#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"

namespace {
constexpr int RENDER_QUALITY_BITS = 0xFFFF;

CDataRender* inq_render_data(const CNodeOpArray& inputs, int i)
{
    return static_cast<CDataRender*>(inputs.inq_data(i));
}

/// A request that was taken away from the op reaches each layer of a group that feeds it.
void hide(CNodeOp& op, AbortPanel* abort)
{
    op.changed_request(abort);
    for (int k = 0; k < op.inq_n_inputs(); ++k) {
        const CNodeOpArray* layers = op.inq_inputs(k);
        if (layers && layers->inq_n_nodes() > 1)
            op.changed_request(k, abort);
    }
}
} // namespace

int CDataRender::inq_samples_per_pixel() const
{
    const int colours = is_colour ? 3 : 1;
    return image_is_opaque ? colours : colours + 1;
}

void CDataRender::set_request_data(int frame, bool colour, bool sixteen_bps, int quality,
                                   const Matrix44& to_view, const IntBBox& wanted)
{
    clear_immediate_data();
    clear_generated_data();
    frameno = frame;
    is_colour = colour;
    is_16_bps = sixteen_bps;
    render_quality = quality & RENDER_QUALITY_BITS;
    node_to_view_transform = to_view;
    image_ibbox_v = wanted;
}

void CDataRender::set_immediate_data(const IntBBox& covered, bool opaque)
{
    image_ibbox_v = covered;
    image_is_opaque = opaque;
}

void CDataRender::copy_request_data_from(CData* consumer)
{
    const auto* from = static_cast<const CDataRender*>(consumer);
    frameno = consumer->inq_frameno();
    is_colour = from->is_colour;
    is_16_bps = from->is_16_bps;
    render_quality = from->render_quality;
    node_to_view_transform = from->node_to_view_transform;
    image_ibbox_v = from->image_ibbox_v;
    inkpaint_quality = from->inkpaint_quality;
}

bool CDataRender::inq_is_asked_like(const CDataRender& other) const
{
    return frameno == other.frameno && is_colour == other.is_colour &&
           is_16_bps == other.is_16_bps && render_quality == other.render_quality &&
           inkpaint_quality == other.inkpaint_quality && image_ibbox_v == other.image_ibbox_v &&
           node_to_view_transform == other.node_to_view_transform;
}

void CDataRender::copy_immediate_data_to(CData* consumer)
{
    static_cast<CDataRender*>(consumer)->set_immediate_data(image_ibbox_v, image_is_opaque);
}

// The union is opaque only where one of the two covers all of it: two opaque halves side by side
// do not count.
void CDataRender::union_immediate_data_from(CData* input, AbortPanel*)
{
    const auto* other = static_cast<const CDataRender*>(input);
    if (other->image_ibbox_v.inq_is_empty())
        return;
    if (image_ibbox_v.inq_is_empty()) {
        set_immediate_data(other->image_ibbox_v, other->image_is_opaque);
        return;
    }
    const IntBBox both = bb_union(image_ibbox_v, other->image_ibbox_v);
    if (other->image_is_opaque && other->image_ibbox_v == both)
        image_is_opaque = true;
    else if (!(image_ibbox_v == both))
        image_is_opaque = false;
    image_ibbox_v = both;
}

// What an opaque layer hides is told so before any pixel is made, and then does no work.
void CDataRender::union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                            gsl::owner<IntArray*> given)
{
    const std::unique_ptr<IntArray> order(given);
    const int cover = find_topmost_cover(*inputs, *order, abort);
    for (int i = 0; i < cover; ++i) {
        const int hidden = order->inq_element(i);
        if (CDataRender* datum = inq_render_data(*inputs, hidden)) {
            datum->clear_immediate_data();
            hide(*inputs->inq_node_op(hidden), abort);
        }
    }
}

/// Merges the inputs from bottom to top. The result is the last position whose input is opaque and
/// covers all that was merged so far; -1 without one.
int CDataRender::find_topmost_cover(const CNodeOpArray& inputs, const IntArray& order,
                                    AbortPanel* abort)
{
    int cover = -1;
    for (int i = 0; i < order.size(); ++i) {
        CDataRender* datum = inq_render_data(inputs, order.inq_element(i));
        if (!datum)
            continue;
        union_immediate_data_from(datum, abort);
        if (datum->image_is_opaque && datum->image_ibbox_v == image_ibbox_v)
            cover = i;
    }
    return cover;
}

void CDataRender::union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort)
{
    union_immediate_data_from(inputs, abort, sort_input_order(inputs));
}

void CDataRender::union_change_data_from(CData*) {}

void CDataRender::union_change_data_from(CNodeOpArray*) {}

void CDataRender::copy_change_data_to(CData*) {}

void CDataRender::clear_immediate_data()
{
    set_immediate_data(IntBBox(), false);
}

void CDataRender::clear_change_data()
{
    changed_area = IntBBox();
}

void CDataRender::delete_cache() {}
