#include "imagelib/src/samples.h"

#include <bit>

namespace {
/// Adds or takes away alpha. All pixels but the last are moved as four samples at once: the fourth
/// is read from the next pixel and replaced, or written there and overwritten.
template <class Sample, int TO_SAMPLES> void change_alpha(Sample* out, const Sample* in, int pixels)
{
    using Word = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    static_assert(std::endian::native == std::endian::little);
    constexpr int FROM_SAMPLES = 7 - TO_SAMPLES;
    constexpr Word ALPHA = Word{samples::FULL<Sample>} << (3 * 8 * sizeof(Sample));
    int i = 0;
    for (; i + 1 < pixels; ++i, out += TO_SAMPLES, in += FROM_SAMPLES) {
        Word pixel;
        std::memcpy(&pixel, in, sizeof(pixel));
        pixel |= ALPHA;
        std::memcpy(out, &pixel, sizeof(pixel));
    }
    if (i == pixels)
        return;
    std::memcpy(out, in, 3 * sizeof(Sample));
    if (TO_SAMPLES == 4)
        out[3] = samples::FULL<Sample>;
}

template <class To, int TO_SAMPLES, class From, int FROM_SAMPLES>
void convert(void* to, const void* from, int pixels)
{
    auto* out = static_cast<To*>(to);
    const auto* in = static_cast<const From*>(from);
    if constexpr (std::is_same_v<To, From> && TO_SAMPLES == FROM_SAMPLES) {
        std::memcpy(out, in, static_cast<std::size_t>(pixels) * TO_SAMPLES * sizeof(To));
        return;
    } else if constexpr (std::is_same_v<To, From>) {
        return change_alpha<To, TO_SAMPLES>(out, in, pixels);
    }
    for (int i = 0; i < pixels; ++i, out += TO_SAMPLES, in += FROM_SAMPLES) {
        for (int c = 0; c < 3; ++c)
            out[c] = samples::change_depth<To>(in[c]);
        if constexpr (TO_SAMPLES == 4 && FROM_SAMPLES == 4)
            out[3] = samples::change_depth<To>(in[3]);
        else if constexpr (TO_SAMPLES == 4)
            out[3] = samples::FULL<To>;
    }
}

template <class To, int TO_SAMPLES>
void convert_from(void* to, const void* from, PixType from_type, int pixels)
{
    switch (from_type) {
    case PT_RGBA_8:
        return convert<To, TO_SAMPLES, std::uint8_t, 4>(to, from, pixels);
    case PT_RGB_8:
        return convert<To, TO_SAMPLES, std::uint8_t, 3>(to, from, pixels);
    case PT_RGBA_16:
        return convert<To, TO_SAMPLES, std::uint16_t, 4>(to, from, pixels);
    case PT_RGB_16:
        return convert<To, TO_SAMPLES, std::uint16_t, 3>(to, from, pixels);
    }
}
} // namespace

void convert_pixels(void* to, PixType to_type, const void* from, PixType from_type, int pixels)
{
    switch (to_type) {
    case PT_RGBA_8:
        return convert_from<std::uint8_t, 4>(to, from, from_type, pixels);
    case PT_RGB_8:
        return convert_from<std::uint8_t, 3>(to, from, from_type, pixels);
    case PT_RGBA_16:
        return convert_from<std::uint16_t, 4>(to, from, from_type, pixels);
    case PT_RGB_16:
        return convert_from<std::uint16_t, 3>(to, from, from_type, pixels);
    }
}
