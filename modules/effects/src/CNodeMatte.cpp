#include "effects/hdr/CNodeMatte.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeEffectOp.h"
#include "effects/src/amounts.h"
#include "effects/src/effect_pixmaps.h"
#include "kivlib/hdr/AbortPanel.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {
constexpr unsigned long STRENGTH = 1;
constexpr unsigned long INVERT = 2;

constexpr int COLOUR = 0; // the inputs
constexpr int MATTE = 1;

/// What stays of a pixel of the colour, as a straight line over the alpha of the matte.
struct Share {
    double outside; // of the matte
    double gain;    // from there to where the matte is opaque

    static Share of(double strength, double invert)
    {
        return {1.0 - strength * (1.0 - invert), strength * (1.0 - 2.0 * invert)};
    }
};

template <class Sample> class MatteRows {
public:
    explicit MatteRows(const Share& share)
        : outside(to_fixed(share.outside)), gain(to_fixed(share.gain))
    {}

    /// Multiplies `pixels` pixels by what the matte leaves of them; a null matte is clear.
    void apply(Sample* colour, const Sample* matte, int pixels) const
    {
        for (int i = 0; i < pixels; ++i, colour += 4) {
            const std::int64_t left = outside * FULL + gain * (matte ? matte[4 * i + 3] : 0);
            const auto share = static_cast<std::uint32_t>((left + HALF) >> BITS);
            if (share == FULL)
                continue;
            for (int c = 0; c < 4; ++c)
                colour[c] = multiply(colour[c], share);
        }
    }

private:
    static constexpr int BITS = 24;
    static constexpr std::int64_t HALF = std::int64_t{1} << (BITS - 1);
    static constexpr std::int64_t FULL = std::numeric_limits<Sample>::max();
    static constexpr int SAMPLE_BITS = std::numeric_limits<Sample>::digits;

    static std::int64_t to_fixed(double value) { return std::llround(std::ldexp(value, BITS)); }

    /// a * b / FULL, rounded.
    static Sample multiply(std::uint32_t a, std::uint32_t b)
    {
        const std::uint32_t product = a * b + (1U << (SAMPLE_BITS - 1));
        return static_cast<Sample>((product + (product >> SAMPLE_BITS)) >> SAMPLE_BITS);
    }

    std::int64_t outside;
    std::int64_t gain;
};

/// `place`: of the colour's top left pixel in the matte.
template <class Sample>
void apply_matte(KIVPixmap& colour, const KIVPixmap* matte, const IntVector2& place,
                 const Share& share)
{
    const MatteRows<Sample> rows(share);
    const int x = static_cast<int>(place.x());
    const int width = colour.inq_width();
    const int begin = matte ? std::clamp(-x, 0, width) : width;
    const int end = matte ? std::clamp(matte->inq_width() - x, begin, width) : width;
    for (int y = 0; y < colour.inq_height(); ++y) {
        const int line = y + static_cast<int>(place.y());
        const bool is_inside = matte && line >= 0 && line < matte->inq_height();
        auto* row = reinterpret_cast<Sample*>(colour.inq_row(y));
        if (!is_inside) {
            rows.apply(row, nullptr, width);
            continue;
        }
        const auto* matte_row = reinterpret_cast<const Sample*>(matte->inq_row(line));
        rows.apply(row, nullptr, begin);
        rows.apply(row + 4 * begin, matte_row + 4 * (begin + x), end - begin);
        rows.apply(row + 4 * end, nullptr, width - end);
    }
}

class MatteOp : public CNodeEffectOp {
public:
    using CNodeEffectOp::CNodeEffectOp;

    void copy_node_info(CNode* node) override
    {
        const CDataImage* output = inq_output_image();
        if (!output)
            return;
        const auto* matte = static_cast<CNodeMatte*>(node);
        const int frame = output->inq_frameno();
        share = Share::of(matte->inq_strength(frame), matte->inq_invert(frame));
    }

    /// There is no more than the colour has, and nothing where nothing of it is left.
    void init_data(AbortPanel* abort) override
    {
        CNodeEffectOp::init_data(abort);
        CDataImage* output = inq_output_image();
        const CDataImage* colour = inq_input_image(COLOUR);
        const CDataImage* matte = inq_input_image(MATTE);
        if (!output || !colour)
            return;
        IntBBox covered = output->inq_image_ibbox_v();
        covered.set_intersection(colour->inq_image_ibbox_v());
        if (matte && share.outside <= 0.0)
            covered.set_intersection(matte->inq_image_ibbox_v());
        output->set_immediate_data(covered, false);
    }

    void generate_effect(AbortPanel*) override
    {
        CDataImage* output = inq_output_image();
        CDataImage* matte = inq_input_image(MATTE);
        std::unique_ptr<KIVPixmap> picture = take_picture(inq_input_image(COLOUR));
        if (!picture || output->inq_image_ibbox_v().inq_is_empty())
            return;
        if (matte) {
            const std::unique_ptr<KIVPixmap> cover = take_picture(matte);
            const IntVector2 place = find_output_in(*output, *matte, inq_process_rect(MATTE));
            if (picture->inq_bits_per_sample() == 8)
                apply_matte<std::uint8_t>(*picture, cover.get(), place, share);
            else
                apply_matte<std::uint16_t>(*picture, cover.get(), place, share);
        }
        output->set_generated_data(picture.release());
    }

private:
    Share share = {0.0, 1.0};
};
} // namespace

CNodeMatte::CNodeMatte()
{
    add_subcolumn(STRENGTH, new_amount(ALL_AT_FIRST), "Strength");
    add_subcolumn(INVERT, new_amount(NOTHING_AT_FIRST), "Invert");
}

gsl::owner<CNodeOp*> CNodeMatte::new_nodeop(int)
{
    return new MatteOp(this);
}

NumericSubColumn* CNodeMatte::inq_strength_subcolumn() const
{
    return find_amount(*this, STRENGTH);
}

NumericSubColumn* CNodeMatte::inq_invert_subcolumn() const
{
    return find_amount(*this, INVERT);
}

double CNodeMatte::inq_strength(int frame) const
{
    return inq_amount(inq_strength_subcolumn(), ALL_AT_FIRST, frame);
}

double CNodeMatte::inq_invert(int frame) const
{
    return inq_amount(inq_invert_subcolumn(), NOTHING_AT_FIRST, frame);
}
