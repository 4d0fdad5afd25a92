#include "imagelib/src/row_kernels.h"

#include "imagelib/src/samples.h"

#include <algorithm>
#include <bit>

namespace {
template <class Sample>
void subtract(Sample* __restrict to, const Sample* __restrict from, std::size_t count,
              std::size_t distance)
{
    const std::size_t head = std::min(count, distance);
    std::copy_n(from, head, to);
    for (std::size_t i = head; i < count; ++i)
        to[i] = static_cast<Sample>(from[i] - from[i - distance]);
}

/// Pixels of four samples, each a part of a vector.
template <class Sample> void add_fours(Sample* to, const Sample* from, std::size_t pixels)
{
    using Pixel = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
    using Samples [[gnu::vector_size(16)]] = Sample;
    using Pixels [[gnu::vector_size(16)]] = Pixel;
    Samples sum = {};
    for (std::size_t i = 0; i < pixels; ++i) {
        Pixel pixel;
        std::memcpy(&pixel, from + 4 * i, sizeof(pixel));
        sum += reinterpret_cast<Samples>(Pixels{pixel});
        pixel = reinterpret_cast<Pixels>(sum)[0];
        std::memcpy(to + 4 * i, &pixel, sizeof(pixel));
    }
}

template <class Sample>
void add(Sample* to, const Sample* from, std::size_t count, std::size_t distance)
{
    if (distance == 4)
        return add_fours(to, from, count / 4);
    const std::size_t head = std::min(count, distance);
    std::memmove(to, from, head * sizeof(Sample));
    for (std::size_t i = head; i < count; ++i)
        to[i] = static_cast<Sample>(from[i] + to[i - distance]);
}

template <class Sample>
void divide(Sample* __restrict to, const Sample* __restrict from, int pixels)
{
    constexpr unsigned FULL = samples::FULL<Sample>;
    for (int i = 0; i < pixels; ++i, to += 4, from += 4) {
        const unsigned alpha = from[3];
        if (alpha == FULL || alpha == 0) { // most of a drawing
            std::memcpy(to, from, 4 * sizeof(Sample));
            if (alpha == 0)
                to[0] = to[1] = to[2] = 0;
            continue;
        }
        for (int c = 0; c < 3; ++c)
            to[c] = static_cast<Sample>(std::min((from[c] * FULL + alpha / 2) / alpha, FULL));
        to[3] = from[3];
    }
}

/// Four bytes at once, at any place.
void swap_in_words(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, int pixels)
{
    static_assert(std::endian::native == std::endian::little);
    for (int i = 0; i < pixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + 4 * i, sizeof(pixel));
        pixel = (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
        std::memcpy(to + 4 * i, &pixel, sizeof(pixel));
    }
}

void swap_in_bytes(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, int pixels)
{
    for (int i = 0; i < pixels; ++i, to += 3, from += 3) {
        to[0] = from[2];
        to[1] = from[1];
        to[2] = from[0];
    }
}
} // namespace

void put_differences(void* to, const void* from, std::size_t bytes, std::size_t distance, int bits)
{
    if (bits == 8)
        subtract(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from), bytes,
                 distance);
    else
        subtract(static_cast<std::uint16_t*>(to), static_cast<const std::uint16_t*>(from),
                 bytes / 2, distance / 2);
}

void add_differences(void* to, const void* from, std::size_t bytes, std::size_t distance, int bits)
{
    if (bits == 8)
        add(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from), bytes,
            distance);
    else
        add(static_cast<std::uint16_t*>(to), static_cast<const std::uint16_t*>(from), bytes / 2,
            distance / 2);
}

void make_straight(void* to, const void* from, int pixels, int bits)
{
    if (bits == 8)
        divide(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from), pixels);
    else
        divide(static_cast<std::uint16_t*>(to), static_cast<const std::uint16_t*>(from), pixels);
}

void swap_red_and_blue(void* to, const void* from, int pixels, int samples)
{
    if (samples == 4)
        swap_in_words(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from),
                      pixels);
    else
        swap_in_bytes(static_cast<std::uint8_t*>(to), static_cast<const std::uint8_t*>(from),
                      pixels);
}

void swap_bytes(void* to, const void* from, std::size_t samples)
{
    auto* __restrict out = static_cast<std::uint16_t*>(to);
    const auto* __restrict in = static_cast<const std::uint16_t*>(from);
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = static_cast<std::uint16_t>(in[i] >> 8 | in[i] << 8);
}
