#pragma once

#include "imagelib/hdr/PixType.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

// Arithmetic of single samples. `Sample` is std::uint8_t or std::uint16_t.

namespace samples {

template <class Sample> inline constexpr unsigned FULL = std::numeric_limits<Sample>::max();

/// a * b / FULL, rounded; exact for all values.
inline unsigned multiply(std::uint8_t a, unsigned b)
{
    const unsigned product = a * b + 0x80;
    return (product + (product >> 8)) >> 8;
}
inline unsigned multiply(std::uint16_t a, unsigned b)
{
    const unsigned product = a * b + 0x8000;
    return (product + (product >> 16)) >> 16;
}

template <class To, class From> To change_depth(From value)
{
    if constexpr (std::is_same_v<To, From>)
        return value;
    else if constexpr (sizeof(To) > sizeof(From))
        return static_cast<To>(value * 0x101);
    else
        return static_cast<To>((value * 0xFFU + 0x807FU) >> 16);
}

/// What a premultiplied sample stands for, in 16 bits. `alpha` isn't 0.
template <class Sample> std::uint16_t to_straight(Sample sample, unsigned alpha)
{
    if (alpha == FULL<Sample>)
        return change_depth<std::uint16_t>(sample);
    constexpr unsigned MOST = FULL<std::uint16_t>;
    return static_cast<std::uint16_t>(std::min((sample * MOST + alpha / 2) / alpha, MOST));
}

/// One pixel over another, both premultiplied.
template <class Sample> void put_over(Sample* target, const Sample* source)
{
    const unsigned rest = FULL<Sample> - source[3];
    if (rest == 0) {
        std::memcpy(target, source, 4 * sizeof(Sample));
        return;
    }
    if (rest == FULL<Sample> && (source[0] | source[1] | source[2]) == 0)
        return;
    for (int c = 0; c < 4; ++c) {
        const unsigned sum = source[c] + multiply(target[c], rest);
        target[c] = static_cast<Sample>(sum < FULL<Sample> ? sum : FULL<Sample>);
    }
}

} // namespace samples

/// Copies `pixels` pixels from one layout to another. Alpha that goes away leaves the colour over
/// black; alpha that comes is opaque.
void convert_pixels(void* to, PixType to_type, const void* from, PixType from_type, int pixels);
