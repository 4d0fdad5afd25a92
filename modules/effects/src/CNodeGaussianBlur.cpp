#include "effects/hdr/CNodeGaussianBlur.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeEffectOp.h"
#include "effects/src/amounts.h"
#include "effects/src/effect_pixmaps.h"
#include "effects/src/gaussian_blur.h"
#include "kivlib/hdr/AbortPanel.h"

namespace {
constexpr unsigned long RADIUS = 1;
constexpr AmountRange RADIUS_RANGE = {10.0, 0.0, 1000.0, KIV_UNIT_WORLD};

constexpr double DEVIATIONS_IN_RADIUS = 2.0;

class BlurOp : public CNodeEffectOp {
public:
    using CNodeEffectOp::CNodeEffectOp;

    void copy_node_info(CNode* node) override
    {
        if (const CDataImage* output = inq_output_image())
            radius = static_cast<CNodeGaussianBlur*>(node)->inq_radius(output->inq_frameno());
    }

    void set_effect_request() override
    {
        const Matrix44& to_view = inq_output_image()->inq_node_to_view_transform();
        across = BlurAxis(find_deviation(to_view, 0));
        down = BlurAxis(find_deviation(to_view, 1));
        set_pixel_border(IntVector2(across.inq_border(), down.inq_border()));
    }

    void generate_effect(AbortPanel* abort) override
    {
        CDataImage* output = inq_output_image();
        CDataImage* input = inq_input_image();
        std::unique_ptr<KIVPixmap> picture = take_picture(input);
        const IntRect& area = output->inq_image_ibbox_v().inq_rectangle();
        if (!picture || output->inq_image_ibbox_v().inq_is_empty())
            return;
        if (across.is_sharp() && down.is_sharp()) {
            output->set_generated_data(picture.release());
            return;
        }
        auto blurred = std::make_unique<KIVPixmap>(static_cast<int>(area.get_width()),
                                                   static_cast<int>(area.get_height()),
                                                   picture->inq_type(), nullptr, false);
        const IntVector2 place = find_output_in(*output, *input, inq_process_rect());
        blur_gaussian(*blurred, *picture, place, across, down, abort);
        if (abort && abort->inq_abort())
            return;
        output->set_generated_data(blurred.release());
    }

private:
    /// In pixels along one side of the view. A disc of the node's space, turned and stretched,
    /// reaches as far along the side as the matrix's row is long.
    double find_deviation(const Matrix44& to_view, int row) const
    {
        return radius / DEVIATIONS_IN_RADIUS * std::hypot(to_view(row, 0), to_view(row, 1));
    }

    double radius = 0.0; // in node units
    BlurAxis across;
    BlurAxis down;
};
} // namespace

CNodeGaussianBlur::CNodeGaussianBlur()
{
    init_subcolumn(new_amount(RADIUS_RANGE), "Radius");
}

gsl::owner<CNodeOp*> CNodeGaussianBlur::new_nodeop(int)
{
    return new BlurOp(this);
}

NumericSubColumn* CNodeGaussianBlur::inq_radius_subcolumn() const
{
    return find_amount(*this, RADIUS);
}

double CNodeGaussianBlur::inq_radius(int frame) const
{
    return inq_amount(inq_radius_subcolumn(), RADIUS_RANGE, frame);
}
