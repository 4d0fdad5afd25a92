#include "effects/hdr/CNodeLevels.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeEffectOp.h"
#include "effects/src/amounts.h"
#include "effects/src/effect_pixmaps.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {
constexpr AmountRange GAMMA_RANGE = {1.0, 0.01, 100.0, KIV_UNIT_WORLD};

/// The outcome of every value that a sample can have.
template <class Sample> class LevelsTable {
public:
    explicit LevelsTable(const Levels& levels) : outcomes(std::size_t{FULL} + 1)
    {
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            const double outcome = levels.apply(static_cast<double>(i) / FULL);
            outcomes[i] = static_cast<Sample>(std::lround(outcome * FULL));
        }
    }

    void apply(Sample* pixel, int pixels) const
    {
        for (; pixels > 0; --pixels, pixel += 4) {
            const std::uint32_t alpha = pixel[3];
            if (alpha == FULL)
                change_opaque(pixel);
            else if (alpha > 0)
                change(pixel, alpha);
        }
    }

private:
    static constexpr std::uint32_t FULL = std::numeric_limits<Sample>::max();

    void change_opaque(Sample* pixel) const
    {
        for (int c = 0; c < 3; ++c)
            pixel[c] = outcomes[pixel[c]];
    }

    void change(Sample* pixel, std::uint32_t alpha) const
    {
        for (int c = 0; c < 3; ++c) {
            const std::uint32_t straight = std::min((pixel[c] * FULL + alpha / 2) / alpha, FULL);
            pixel[c] = static_cast<Sample>((outcomes[straight] * alpha + FULL / 2) / FULL);
        }
    }

    std::vector<Sample> outcomes;
};

template <class Sample> void apply_levels(KIVPixmap& picture, const Levels& levels)
{
    const LevelsTable<Sample> table(levels);
    for (int y = 0; y < picture.inq_height(); ++y)
        table.apply(reinterpret_cast<Sample*>(picture.inq_row(y)), picture.inq_width());
}

class LevelsOp : public CNodeEffectOp {
public:
    using CNodeEffectOp::CNodeEffectOp;

    void copy_node_info(CNode* node) override
    {
        if (const CDataImage* output = inq_output_image())
            levels = static_cast<CNodeLevels*>(node)->inq_levels(output->inq_frameno());
    }

    void generate_effect(AbortPanel*) override
    {
        CDataImage* output = inq_output_image();
        std::unique_ptr<KIVPixmap> picture = take_picture(inq_input_image());
        if (!picture || output->inq_image_ibbox_v().inq_is_empty())
            return;
        if (levels != Levels()) {
            if (picture->inq_bits_per_sample() == 8)
                apply_levels<std::uint8_t>(*picture, levels);
            else
                apply_levels<std::uint16_t>(*picture, levels);
        }
        output->set_generated_data(picture.release());
    }

private:
    Levels levels;
};
} // namespace

// Without a way from black to white, all from in_black on is white.
double Levels::apply(double value) const
{
    const double range = in_white - in_black;
    const double step = value < in_black ? 0.0 : 1.0;
    const double place = range > 0.0 ? std::clamp((value - in_black) / range, 0.0, 1.0) : step;
    return out_black + (out_white - out_black) * std::pow(place, 1.0 / gamma);
}

CNodeLevels::CNodeLevels()
{
    add_subcolumn(IN_BLACK, new_amount(NOTHING_AT_FIRST), "In Black");
    add_subcolumn(IN_WHITE, new_amount(ALL_AT_FIRST), "In White");
    add_subcolumn(GAMMA, new_amount(GAMMA_RANGE), "Gamma");
    add_subcolumn(OUT_BLACK, new_amount(NOTHING_AT_FIRST), "Out Black");
    add_subcolumn(OUT_WHITE, new_amount(ALL_AT_FIRST), "Out White");
}

gsl::owner<CNodeOp*> CNodeLevels::new_nodeop(int)
{
    return new LevelsOp(this);
}

NumericSubColumn* CNodeLevels::inq_value_subcolumn(Value value) const
{
    return find_amount(*this, value);
}

Levels CNodeLevels::inq_levels(int frame) const
{
    const auto amount = [&](Value value, const AmountRange& range) {
        return inq_amount(inq_value_subcolumn(value), range, frame);
    };
    return {amount(IN_BLACK, NOTHING_AT_FIRST), amount(IN_WHITE, ALL_AT_FIRST),
            amount(GAMMA, GAMMA_RANGE), amount(OUT_BLACK, NOTHING_AT_FIRST),
            amount(OUT_WHITE, ALL_AT_FIRST)};
}
