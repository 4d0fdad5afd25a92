#pragma once

#include "compositor/imagelib/lib/hdr/EffectData.h"
#include "compositor/lib/hdr/CNodeOp.h"

#include <memory>

class CDataImage;

/// The base of all that looks at pixels: blurs, mattes, changes of colour. A module derives its op
/// from it and overrides the two operations below. What feeds an effect is drawn into pixmaps of
/// its own, with a border as wide as the effect asks for.
class CNodeEffectOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;
    ~CNodeEffectOp() override;

    void copy_request_data_to_inputs() override;
    void init_data(AbortPanel* abort) override;
    void generate_data(AbortPanel* abort) override;

    /// Only an effect that is left out in interactive mode lets its inputs draw through.
    bool inq_can_composite() override;
    bool inq_composite_through() override;

    /// Called once a frame, while requests go down and the output's is known: says by `set_border`,
    /// `set_pixel_border` and `set_transform` what the effect needs of its inputs.
    virtual void set_effect_request();

    /// Makes the output from the inputs, which now have their borders.
    virtual void generate_effect(AbortPanel* abort);

protected:
    /// Null where nothing is connected.
    CDataImage* inq_input_image() const { return inq_input_image(0); }
    CDataImage* inq_input_image(int i) const;
    CDataImage* inq_output_image() const;

    /// These set all inputs, or one. `border` is in node units.
    void set_border(const Vector2& border);
    void set_border(int i, const Vector2& border);
    void set_pixel_border(const IntVector2& border);
    void set_pixel_border(int i, const IntVector2& border);
    void set_transform(const Matrix44& view_to_effect);
    void set_transform(int i, const Matrix44& view_to_effect);

    /// In the input's pixmap, rows from the top. It begins where the input's own area begins; up to
    /// there reaches the border.
    IntRect inq_process_rect() const { return inq_process_rect(0); }
    IntRect inq_process_rect(int i) const;

    /// The border in pixels.
    Vector2 inq_effect_radius() const { return inq_effect_radius(0); }
    Vector2 inq_effect_radius(int i) const;
    IntVector2 inq_int_effect_radius() const { return inq_int_effect_radius(0); }
    IntVector2 inq_int_effect_radius(int i) const;

    /// Brings the pixmap of every input, or of one, to the area that the effect reads: transparent
    /// where the input has nothing.
    void pad_border();
    void pad_border(int i);

private:
    void build_effect_data();
    void clear_effect_data() { effect_data.reset(); }
    void hand_on_request_of(CDataImage& output);
    void copy_effect_data_inputs();
    void init_effect();
    bool finish_inputs(AbortPanel* abort) const;
    bool inq_is_wanted() const;

    /// Null out of range, and where no request has come down yet.
    EffectData* find_effect_data(int i) const;
    template <class Change> void change_effect_data(int i, const Change& change);
    template <class Change> void change_all_effect_data(const Change& change);

    std::unique_ptr<EffectData[]> effect_data; // one for each input; null until needed
};
