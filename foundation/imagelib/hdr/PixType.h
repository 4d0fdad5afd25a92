#pragma once

/// How the samples of a pixel lie in memory: red, green, blue and, in some, alpha last.
enum PixType { PT_RGBA_8 = 0, PT_RGB_8 = 1, PT_RGBA_16 = 8, PT_RGB_16 = 9 };

/// A grey pixel has no layout of its own: it is kept as three equal samples.
constexpr PixType make_pix_type(int samples_per_pixel, int bits_per_sample)
{
    const bool has_alpha = samples_per_pixel == 4 || samples_per_pixel == 2;
    return static_cast<PixType>((bits_per_sample == 16 ? PT_RGBA_16 : PT_RGBA_8) +
                                (has_alpha ? PT_RGBA_8 : PT_RGB_8));
}

constexpr bool has_alpha(PixType type)
{
    return type == PT_RGBA_8 || type == PT_RGBA_16;
}

constexpr int inq_bits(PixType type)
{
    return type < PT_RGBA_16 ? 8 : 16;
}

constexpr int inq_bytes_per_pixel(PixType type)
{
    return (has_alpha(type) ? 4 : 3) * inq_bits(type) / 8;
}
