#pragma once

#include "imagelib/hdr/KIVPixmap.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

// Pictures and placements that all painters get, and the exact picture that they are measured by.

namespace bench {

constexpr int SOURCE_WIDTH = 2048;
constexpr int SOURCE_HEIGHT = 1556;

enum Picture { HALF_TRANSPARENT, CEL, OPAQUE };

/// A cel is painted inside a circle that covers a third of it, with a soft edge.
inline double cover_at(int picture, int x, int y)
{
    if (picture != CEL)
        return picture == OPAQUE ? 1.0 : 0.5;
    const double radius = std::sqrt(SOURCE_WIDTH * SOURCE_HEIGHT / 3.0 / 3.14159);
    const double away = std::hypot(x - SOURCE_WIDTH / 2, y - SOURCE_HEIGHT / 2);
    return std::clamp(radius - away, 0.0, 1.0);
}

/// Paint of a painting: smooth, with some grain. A cel has flat areas of few colours.
inline double paint_at(int picture, int x, int y, int c)
{
    const double wave = 0.5 + 0.4 * std::sin(0.011 * x * (c + 1)) * std::cos(0.007 * y * (3 - c));
    return picture == CEL ? std::round(wave * 5.0) / 5.0
                          : wave + ((x * 7 + y * 13 + c * 5) % 16) / 160.0;
}

/// `number` makes pictures differ.
template <class Sample> std::unique_ptr<KIVPixmap> make_picture(int picture, int number = 0)
{
    constexpr double MOST = std::numeric_limits<Sample>::max();
    auto source = std::make_unique<KIVPixmap>(
        SOURCE_WIDTH, SOURCE_HEIGHT, sizeof(Sample) == 1 ? PT_RGBA_8 : PT_RGBA_16, nullptr, false);
    for (int y = 0; y < SOURCE_HEIGHT; ++y) {
        auto* pixel = reinterpret_cast<Sample*>(source->inq_row(y));
        for (int x = 0; x < SOURCE_WIDTH; ++x, pixel += 4) {
            const double cover = cover_at(picture, x, y);
            for (int c = 0; c < 3; ++c) {
                const double paint = paint_at(picture, x + number * 37, y, c);
                pixel[c] = static_cast<Sample>(std::lround(MOST * cover * paint));
            }
            pixel[3] = static_cast<Sample>(std::lround(MOST * cover));
        }
    }
    return source;
}

/// From pixels of a source to those of a frame, y downwards.
struct Placing {
    double scale;
    double degrees;
    double x; // of the source's top left corner
    double y;

    double cosine() const { return std::cos(degrees * 3.14159265358979 / 180.0) * scale; }
    double sine() const { return std::sin(degrees * 3.14159265358979 / 180.0) * scale; }
};

/// The n-th of the cels that stand on a frame, each otherwise.
inline Placing inq_cel_placing(int n, int frame_width)
{
    const double size = frame_width / 1920.0;
    return {size * (0.82 + 0.031 * (n % 12)), -20.0 + 3.7 * n, size * (-90.3 + 61.7 * (n % 16)),
            size * (40.2 - 23.3 * (n % 9))};
}

struct Layer {
    const KIVPixmap* source;
    Placing placing;
};

/// The frame in doubles, four samples a pixel and 1 for all there is, each layer put over what lies
/// below it without rounding. A pixel is one sample between four pixels of the source, or the mean
/// of `grid` by `grid` of them, in the share that the source covers.
class ExactFrame {
public:
    ExactFrame(int width, int height, int grid = 1)
        : width(width), height(height), grid(grid),
          values(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0.0)
    {}

    void draw(const Layer& layer)
    {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                put_over(x, y, layer);
    }

    /// In decibels, of what another painter made.
    double inq_psnr(const KIVPixmap& other) const
    {
        double sum = 0.0;
        for (int y = 0; y < height; ++y)
            for (int i = 0; i < 4 * width; ++i) {
                const double exact =
                    values[static_cast<std::size_t>(y) * static_cast<std::size_t>(4 * width) +
                           static_cast<std::size_t>(i)];
                const double difference = sample(other, i / 4, y, i % 4) - exact;
                sum += difference * difference;
            }
        return -10.0 * std::log10(sum / static_cast<double>(values.size()) + 1e-20);
    }

private:
    static double sample(const KIVPixmap& pixmap, int x, int y, int c)
    {
        const unsigned char* row = pixmap.inq_row(y);
        if (pixmap.inq_bits_per_sample() == 8)
            return row[4 * x + c] / 255.0;
        return reinterpret_cast<const std::uint16_t*>(row)[4 * x + c] / 65535.0;
    }

    void put_over(int x, int y, const Layer& layer)
    {
        constexpr int EDGE = 8; // samples each way that tell how much is covered
        double mean[4] = {};
        double cover = 0.0;
        for (int i = 0; i < EDGE * EDGE; ++i)
            cover += covers(layer, x + (i % EDGE + 0.5) / EDGE, y + (i / EDGE + 0.5) / EDGE);
        if (cover == 0.0)
            return;
        for (int i = 0; i < grid * grid; ++i)
            add_sample(mean, layer, x + (i % grid + 0.5) / grid, y + (i / grid + 0.5) / grid);
        cover /= EDGE * EDGE * grid * grid;
        double* to = values.data() + 4 * (static_cast<std::ptrdiff_t>(y) * width + x);
        const double rest = 1.0 - mean[3] * cover;
        for (int c = 0; c < 4; ++c)
            to[c] = mean[c] * cover + to[c] * rest;
    }

    static void find(const Layer& layer, double x, double y, double& u, double& v)
    {
        const Placing& p = layer.placing;
        const double area = p.scale * p.scale;
        u = ((x - p.x) * p.cosine() + (y - p.y) * p.sine()) / area;
        v = (-(x - p.x) * p.sine() + (y - p.y) * p.cosine()) / area;
    }

    static bool covers(const Layer& layer, double x, double y)
    {
        double u;
        double v;
        find(layer, x, y, u, v);
        return u >= 0.0 && v >= 0.0 && u < layer.source->inq_width() &&
               v < layer.source->inq_height();
    }

    static void add_sample(double* sum, const Layer& layer, double x, double y)
    {
        double u;
        double v;
        find(layer, x, y, u, v);
        const KIVPixmap& from = *layer.source;
        u = std::clamp(u - 0.5, 0.0, from.inq_width() - 1.001);
        v = std::clamp(v - 0.5, 0.0, from.inq_height() - 1.001);
        const int left = static_cast<int>(u);
        const int top = static_cast<int>(v);
        for (int c = 0; c < 4; ++c) {
            const double upper =
                std::lerp(sample(from, left, top, c), sample(from, left + 1, top, c), u - left);
            const double lower = std::lerp(sample(from, left, top + 1, c),
                                           sample(from, left + 1, top + 1, c), u - left);
            sum[c] += std::lerp(upper, lower, v - top);
        }
    }

    const int width;
    const int height;
    const int grid;
    std::vector<double> values;
};

} // namespace bench
