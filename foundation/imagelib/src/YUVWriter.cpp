#include "imagelib/src/ComponentWriter.h"

namespace {
/// Of ITU-R 601: luma, and its differences to blue and to red.
constexpr ComponentMatrix YUV = {
    {0.299, 0.587, 0.114}, {-0.299, -0.587, 0.886}, {0.701, -0.587, -0.114}};

[[maybe_unused]] const auto* const YUV_WRITER =
    new KIVPixmapWriterDescriptor("YUVWriter", [](int variant) -> gsl::owner<KIVPixmapWriter*> {
        return ComponentWriter::new_writer(YUV, "yuv", variant);
    });
} // namespace
