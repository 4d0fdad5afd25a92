#include "compositor/imagelib/lib/hdr/CNodeEffectOp.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "kivlib/hdr/KIVColour.h"

namespace {
/// Where the top left pixel of `inner` lies in `outer`, in rows from the top.
IntVector2 find_offset(const IntRect& inner, const IntRect& outer)
{
    return {inner.inq_left() - outer.inq_left(), outer.inq_top() - inner.inq_top()};
}

IntVector2 twice(const IntVector2& v)
{
    return v + v;
}

std::unique_ptr<KIVPixmap> new_padded(const KIVPixmap& picture, const IntRect& area,
                                      const IntVector2& offset)
{
    auto padded = std::make_unique<KIVPixmap>(
        static_cast<int>(area.get_width()), static_cast<int>(area.get_height()),
        picture.inq_samples_per_pixel(), picture.inq_bits_per_sample(), nullptr, false);
    padded->set_colour(KIVColour(0.0, 0.0, 0.0, 0.0));
    padded->copy(&picture, offset);
    return padded;
}
} // namespace

CNodeEffectOp::~CNodeEffectOp() = default;

bool CNodeEffectOp::inq_can_composite()
{
    return inq_state() != NODEOP_ACTIVE && CNodeOp::inq_can_composite();
}

bool CNodeEffectOp::inq_composite_through()
{
    return inq_state() != NODEOP_ACTIVE && CNodeOp::inq_composite_through();
}

void CNodeEffectOp::set_effect_request() {}

void CNodeEffectOp::generate_effect(AbortPanel*) {}

CDataImage* CNodeEffectOp::inq_input_image(int i) const
{
    const CNodeOpArray* input = inq_inputs(i);
    return input ? CDataImage::from(input->inq_data()) : nullptr;
}

CDataImage* CNodeEffectOp::inq_output_image() const
{
    return CDataImage::from(inq_node_data());
}

bool CNodeEffectOp::inq_is_wanted() const
{
    const CDataImage* output = inq_output_image();
    return output && !output->inq_image_ibbox_v().inq_is_empty();
}

void CNodeEffectOp::build_effect_data()
{
    if (!effect_data)
        effect_data = std::make_unique<EffectData[]>(static_cast<std::size_t>(inq_n_inputs()));
}

EffectData* CNodeEffectOp::find_effect_data(int i) const
{
    const bool is_there = effect_data && i >= 0 && i < inq_n_inputs();
    return is_there ? &effect_data[static_cast<std::size_t>(i)] : nullptr;
}

template <class Change> void CNodeEffectOp::change_effect_data(int i, const Change& change)
{
    build_effect_data();
    if (EffectData* data = find_effect_data(i))
        change(*data);
}

template <class Change> void CNodeEffectOp::change_all_effect_data(const Change& change)
{
    for (int i = 0; i < inq_n_inputs(); ++i)
        change_effect_data(i, change);
}

void CNodeEffectOp::set_border(const Vector2& border)
{
    change_all_effect_data([&](EffectData& data) { data.set_node_border(border); });
}

void CNodeEffectOp::set_border(int i, const Vector2& border)
{
    change_effect_data(i, [&](EffectData& data) { data.set_node_border(border); });
}

void CNodeEffectOp::set_pixel_border(const IntVector2& border)
{
    change_all_effect_data([&](EffectData& data) { data.set_pixel_border(border); });
}

void CNodeEffectOp::set_pixel_border(int i, const IntVector2& border)
{
    change_effect_data(i, [&](EffectData& data) { data.set_pixel_border(border); });
}

void CNodeEffectOp::set_transform(const Matrix44& view_to_effect)
{
    change_all_effect_data([&](EffectData& data) { data.set_node_transform(view_to_effect); });
}

void CNodeEffectOp::set_transform(int i, const Matrix44& view_to_effect)
{
    change_effect_data(i, [&](EffectData& data) { data.set_node_transform(view_to_effect); });
}

IntRect CNodeEffectOp::inq_process_rect(int i) const
{
    const EffectData* data = find_effect_data(i);
    return data ? data->inq_process_rect() : IntRect();
}

Vector2 CNodeEffectOp::inq_effect_radius(int i) const
{
    const EffectData* data = find_effect_data(i);
    return data ? data->inq_effect_border() : Vector2();
}

IntVector2 CNodeEffectOp::inq_int_effect_radius(int i) const
{
    const EffectData* data = find_effect_data(i);
    return data ? data->inq_int_effect_border() : IntVector2();
}

// The first round gives the effect a geometry that it can ask for, the second brings the inputs
// what it has set. An output that is not wanted leaves nothing wanted of any input.
void CNodeEffectOp::copy_request_data_to_inputs()
{
    clear_effect_data();
    CDataImage* output = inq_output_image();
    if (!inq_input_image() || !output)
        return;
    if (!inq_is_wanted()) {
        hand_on_request_of(*output);
        return;
    }
    copy_effect_data_inputs();
    set_effect_request();
    copy_effect_data_inputs();
}

void CNodeEffectOp::hand_on_request_of(CDataImage& output)
{
    for (int i = 0; i < inq_n_inputs(); ++i)
        if (CDataImage* input = inq_input_image(i))
            input->copy_request_data_from(&output);
}

void CNodeEffectOp::copy_effect_data_inputs()
{
    build_effect_data();
    CDataImage* output = inq_output_image();
    const IntRect& wanted = output->inq_image_ibbox_v().inq_rectangle();
    for (int i = 0; i < inq_n_inputs(); ++i) {
        CDataImage* input = inq_input_image(i);
        if (!input)
            continue;
        EffectData& data = *find_effect_data(i);
        data.set_view_to_node_transform(output->inq_node_to_view_transform(), wanted);
        IntRect area = data.convert_irect_to_effect_space(wanted);
        area.add_border(data.inq_int_effect_border());
        input->copy_request_data_from(output);
        input->set_node_to_view_transform(data.inq_node_to_effect_transform());
        input->set_image_ibbox_v(IntBBox(area));
    }
}

void CNodeEffectOp::init_data(AbortPanel*)
{
    CDataImage* output = inq_output_image();
    if (inq_input_image() && inq_is_wanted())
        init_effect();
    else if (output)
        output->clear_immediate_data();
}

// An effect spreads what it is fed by its border, and is never opaque.
void CNodeEffectOp::init_effect()
{
    build_effect_data();
    IntBBox covered;
    for (int i = 0; i < inq_n_inputs(); ++i) {
        const CDataImage* input = inq_input_image(i);
        if (!input)
            continue;
        const EffectData& data = *find_effect_data(i);
        IntBBox spread = input->inq_image_ibbox_v();
        spread.add_border(data.inq_int_effect_border());
        covered.set_union(data.convert_ibbox_to_output_space(spread));
    }
    CDataImage* output = inq_output_image();
    covered.set_intersection(output->inq_image_ibbox_v());
    output->set_immediate_data(covered, false);
}

void CNodeEffectOp::generate_data(AbortPanel* abort)
{
    if (!inq_input_image() || !finish_inputs(abort))
        return;
    pad_border();
    generate_effect(abort);
}

/// Draws what waits in the inputs, as long as it can be stopped. False if it was.
bool CNodeEffectOp::finish_inputs(AbortPanel* abort) const
{
    for (int i = 0; i < inq_n_inputs(); ++i) {
        const CDataImage* input = inq_input_image(i);
        if (input && !input->finish_drawing(abort))
            return false;
    }
    return true;
}

void CNodeEffectOp::pad_border()
{
    for (int i = 0; i < inq_n_inputs(); ++i)
        pad_border(i);
}

void CNodeEffectOp::pad_border(int i)
{
    CDataImage* input = inq_input_image(i);
    const CDataImage* output = inq_output_image();
    if (!input || !output)
        return;
    build_effect_data();
    EffectData& data = *find_effect_data(i);
    const IntVector2 border = data.inq_int_effect_border();
    const IntRect& delivered = input->inq_image_ibbox_v().inq_rectangle();
    IntRect area = data.convert_irect_to_effect_space(output->inq_image_ibbox_v().inq_rectangle());
    area.add_border(border);
    IntRect reached = delivered;
    reached.add_border(twice(border));
    area.set_intersection(reached);

    const IntVector2 offset = find_offset(delivered, area);
    data.set_process_rect(
        IntRect(offset, area.get_width() - offset.x(), area.get_height() - offset.y()));
    std::unique_ptr<KIVPixmap> picture(input->extract_pixmap());
    if (picture && area != delivered)
        picture = new_padded(*picture, area, offset);
    input->set_generated_data(picture.release());
}
