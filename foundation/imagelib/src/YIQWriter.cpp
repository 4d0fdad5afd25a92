#include "imagelib/src/ComponentWriter.h"

namespace {
/// Of the colour television of 1953: luma, the component from orange to cyan, to which the eye is
/// most alert, and the one from magenta to green.
constexpr ComponentMatrix YIQ = {
    {0.299, 0.587, 0.114}, {0.595716, -0.274453, -0.321263}, {0.211456, -0.522591, 0.311135}};

[[maybe_unused]] const auto* const YIQ_WRITER =
    new KIVPixmapWriterDescriptor("YIQWriter", [](int variant) -> gsl::owner<KIVPixmapWriter*> {
        return ComponentWriter::new_writer(YIQ, "yiq", variant);
    });
} // namespace
