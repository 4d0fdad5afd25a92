#pragma once

#include "imagelib/hdr/KIVPixmap.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

// Pixels as a picture in the test: a row of text for a row of pixels.

inline unsigned inq_sample(const KIVPixmap& pixmap, int x, int y, int sample)
{
    const unsigned char* row = pixmap.inq_row(y);
    const int at = x * pixmap.inq_samples_per_pixel() + sample;
    return pixmap.inq_bits_per_sample() == 8 ? row[at]
                                             : reinterpret_cast<const std::uint16_t*>(row)[at];
}

inline void set_sample(KIVPixmap& pixmap, int x, int y, int sample, unsigned value)
{
    unsigned char* row = pixmap.inq_row(y);
    const int at = x * pixmap.inq_samples_per_pixel() + sample;
    if (pixmap.inq_bits_per_sample() == 8)
        row[at] = static_cast<unsigned char>(value);
    else
        reinterpret_cast<std::uint16_t*>(row)[at] = static_cast<std::uint16_t>(value);
}

/// One sample of every pixel.
inline std::vector<std::vector<unsigned>> inq_plane(const KIVPixmap& pixmap, int sample)
{
    std::vector<std::vector<unsigned>> plane;
    for (int y = 0; y < pixmap.inq_height(); ++y) {
        auto& row = plane.emplace_back();
        for (int x = 0; x < pixmap.inq_width(); ++x)
            row.push_back(inq_sample(pixmap, x, y, sample));
    }
    return plane;
}

/// A soft-edged patch with its own value in every sample; the same picture at both depths.
inline std::unique_ptr<KIVPixmap> make_soft_patch(int width, int height, PixType type)
{
    auto pixmap = std::make_unique<KIVPixmap>(width, height, type, nullptr, false);
    const unsigned scale = pixmap->inq_bits_per_sample() == 8 ? 1 : 0x101;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const unsigned alpha = pixmap->inq_alpha() ? 255U * static_cast<unsigned>(x) /
                                                             static_cast<unsigned>(width - 1)
                                                       : 255U;
            for (int c = 0; c < 3; ++c) {
                const auto straight = static_cast<unsigned>(x * 37 + y * (19 + c * 50)) % 256;
                set_sample(*pixmap, x, y, c, (straight * alpha + 127) / 255 * scale);
            }
            if (pixmap->inq_alpha())
                set_sample(*pixmap, x, y, 3, alpha * scale);
        }
    return pixmap;
}

/// The greatest difference of any sample; a large number for different layouts.
inline unsigned inq_difference(const KIVPixmap& a, const KIVPixmap& b)
{
    if (a.inq_type() != b.inq_type() || a.inq_width() != b.inq_width() ||
        a.inq_height() != b.inq_height())
        return 1000000;
    unsigned most = 0;
    for (int c = 0; c < a.inq_samples_per_pixel(); ++c)
        for (int y = 0; y < a.inq_height(); ++y)
            for (int x = 0; x < a.inq_width(); ++x) {
                const unsigned p = inq_sample(a, x, y, c);
                const unsigned q = inq_sample(b, x, y, c);
                most = std::max(most, p > q ? p - q : q - p);
            }
    return most;
}
