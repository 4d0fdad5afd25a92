#pragma once

#include "imagelib/hdr/KIVPixmap.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

// Pixmaps as pictures of letters, a row to a string: 'R', 'G', 'B', 'W' and 'K' for the colours at
// full strength, '.' for nothing, and '?' for all that lies between.

inline constexpr struct {
    char letter;
    unsigned char samples[4];
} LETTERS[] = {{'.', {0, 0, 0, 0}},     {'R', {255, 0, 0, 255}},     {'G', {0, 255, 0, 255}},
               {'B', {0, 0, 255, 255}}, {'W', {255, 255, 255, 255}}, {'K', {0, 0, 0, 255}}};

using Picture = std::vector<std::string>;

inline std::unique_ptr<KIVPixmap> make_pixmap(const Picture& rows)
{
    auto pixmap = std::make_unique<KIVPixmap>(
        static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), PT_RGBA_8, nullptr, false);
    for (int y = 0; y < pixmap->inq_height(); ++y)
        for (int x = 0; x < pixmap->inq_width(); ++x)
            for (const auto& entry : LETTERS)
                if (entry.letter == rows[std::size_t(y)][std::size_t(x)])
                    std::copy_n(entry.samples, 4, pixmap->inq_row(y) + 4 * x);
    return pixmap;
}

inline char find_letter(const unsigned char* pixel)
{
    for (const auto& entry : LETTERS)
        if (std::equal(entry.samples, entry.samples + 4, pixel))
            return entry.letter;
    return '?';
}

inline Picture find_picture(const KIVPixmap* pixmap)
{
    Picture rows;
    for (int y = 0; pixmap && y < pixmap->inq_height(); ++y) {
        rows.emplace_back();
        for (int x = 0; x < pixmap->inq_width(); ++x)
            rows.back() += find_letter(pixmap->inq_row(y) + 4 * x);
    }
    return rows;
}

/// An opaque pixmap of soft waves; `u` and `v` run from 0 to 1, from the left and from the top.
inline double wave(double u, double v, int sample)
{
    return 127.5 + 110.0 * std::sin(5.0 * u + sample) * std::cos(4.0 * v - sample);
}

inline std::unique_ptr<KIVPixmap> make_waves(int width, int height)
{
    auto pixmap = std::make_unique<KIVPixmap>(width, height, PT_RGBA_8, nullptr, false);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            unsigned char* pixel = pixmap->inq_row(y) + 4 * x;
            for (int sample = 0; sample < 3; ++sample)
                pixel[sample] = static_cast<unsigned char>(
                    std::lround(wave((x + 0.5) / width, (y + 0.5) / height, sample)));
            pixel[3] = 255;
        }
    return pixmap;
}
