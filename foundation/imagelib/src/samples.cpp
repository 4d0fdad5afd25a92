#include "imagelib/src/samples.h"

namespace {
template <class To, int TO_SAMPLES, class From, int FROM_SAMPLES>
void convert(void* to, const void* from, int pixels)
{
    auto* out = static_cast<To*>(to);
    const auto* in = static_cast<const From*>(from);
    if constexpr (std::is_same_v<To, From> && TO_SAMPLES == FROM_SAMPLES) {
        std::memcpy(out, in, static_cast<std::size_t>(pixels) * TO_SAMPLES * sizeof(To));
        return;
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
