#include "effects/src/effect_pixmaps.h"

#include "compositor/imagelib/lib/hdr/CDataImage.h"

namespace {
constexpr int COLOUR_AND_ALPHA = 4;
}

std::unique_ptr<KIVPixmap> take_picture(CDataImage* input)
{
    std::unique_ptr<KIVPixmap> picture(input ? input->extract_pixmap() : nullptr);
    const bool is_there = picture && picture->inq_data() &&
                          picture->convert(COLOUR_AND_ALPHA, picture->inq_bits_per_sample());
    return is_there ? std::move(picture) : nullptr;
}

IntVector2 find_output_in(const CDataImage& output, const CDataImage& input,
                          const IntRect& process_rect)
{
    const IntRect& own = input.inq_image_ibbox_v().inq_rectangle();
    const IntRect& wanted = output.inq_image_ibbox_v().inq_rectangle();
    return {wanted.inq_left() - own.inq_left() + process_rect.inq_left(),
            own.inq_top() - wanted.inq_top() + process_rect.inq_bottom()};
}
