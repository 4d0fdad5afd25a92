#pragma once

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/PixmapImage.h"

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

/// By this library.
inline void draw(KIVPixmap& frame, const Layer& layer, bool filtered)
{
    const Placing& p = layer.placing;
    const double top = frame.inq_height() - p.y;
    const double width = layer.source->inq_width();
    const double height = layer.source->inq_height();
    PixmapImage image(const_cast<KIVPixmap*>(layer.source));
    PixmapImage onto(&frame);
    onto.setHighQuality(filtered);
    image.compositeAffine(p.x - height * p.sine(), top - height * p.cosine(), p.x, top,
                          p.x + width * p.cosine(), top - width * p.sine(), &onto, 0);
}

/// The frame in doubles, four samples a pixel and 1 for all there is, each layer put over what lies
/// below it without rounding. A pixel is one sample between four pixels of the source, or the mean
/// of `grid` by `grid` of them, in the share that the source covers.
class ExactFrame {
public:
    ExactFrame(int width, int height, int grid = 1)
        : width(width), height(height), grid(grid),
          covers(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0.0),
          values(4 * covers.size(), 0.0)
    {}

    void draw(const Layer& layer)
    {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                put_over(x, y, layer);
    }

    enum Part { ALL, INSIDE };

    /// In decibels, of what another painter made: of all pixels, or of those that the last layer
    /// covers as a whole.
    double inq_psnr(const KIVPixmap& other, Part part = ALL) const
    {
        double sum = 0.0;
        std::size_t count = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const std::size_t at = inq_place(x, y);
                if (part == INSIDE && covers[at] < 1.0)
                    continue;
                for (int c = 0; c < 4; ++c) {
                    const double exact = values[4 * at + static_cast<std::size_t>(c)];
                    sum += std::pow(sample(other, x, y, c) - exact, 2.0);
                }
                count += 4;
            }
        return -10.0 * std::log10(sum / static_cast<double>(count) + 1e-20);
    }

private:
    static double sample(const KIVPixmap& pixmap, int x, int y, int c)
    {
        const unsigned char* row = pixmap.inq_row(y);
        if (pixmap.inq_bits_per_sample() == 8)
            return row[4 * x + c] / 255.0;
        return reinterpret_cast<const std::uint16_t*>(row)[4 * x + c] / 65535.0;
    }

    struct Point {
        double u;
        double v;
    };

    std::size_t inq_place(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }

    void put_over(int x, int y, const Layer& layer)
    {
        const std::size_t at = inq_place(x, y);
        const double cover = inq_cover(layer, x, y);
        covers[at] = cover;
        if (cover == 0.0)
            return;
        double mean[4] = {};
        for (int i = 0; i < grid * grid; ++i)
            add_sample(mean, layer, x + (i % grid + 0.5) / grid, y + (i / grid + 0.5) / grid);
        const double share = cover / (grid * grid);
        double* to = values.data() + 4 * at;
        const double rest = 1.0 - mean[3] * share;
        for (int c = 0; c < 4; ++c)
            to[c] = mean[c] * share + to[c] * rest;
    }

    /// In pixels of the source.
    static Point find(const Layer& layer, double x, double y)
    {
        const Placing& p = layer.placing;
        const double area = p.scale * p.scale;
        return {((x - p.x) * p.cosine() + (y - p.y) * p.sine()) / area,
                (-(x - p.x) * p.sine() + (y - p.y) * p.cosine()) / area};
    }

    /// The part of a polygon where `distance(point)` is not negative.
    template <class Distance>
    static std::vector<Point> cut(const std::vector<Point>& polygon, Distance distance)
    {
        std::vector<Point> part;
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point& a = polygon[i];
            const Point& b = polygon[(i + 1) % polygon.size()];
            const double from = distance(a);
            const double to = distance(b);
            if (from >= 0.0)
                part.push_back(a);
            if ((from < 0.0) != (to < 0.0)) {
                const double t = from / (from - to);
                part.push_back({std::lerp(a.u, b.u, t), std::lerp(a.v, b.v, t)});
            }
        }
        return part;
    }

    static double inq_area(const std::vector<Point>& polygon)
    {
        double twice = 0.0;
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            const Point& a = polygon[i];
            const Point& b = polygon[(i + 1) % polygon.size()];
            twice += a.u * b.v - b.u * a.v;
        }
        return std::abs(twice) / 2.0;
    }

    /// How much of a pixel the source covers.
    static double inq_cover(const Layer& layer, int x, int y)
    {
        const double u_end = layer.source->inq_width();
        const double v_end = layer.source->inq_height();
        std::vector<Point> pixel = {find(layer, x, y), find(layer, x + 1, y),
                                    find(layer, x + 1, y + 1), find(layer, x, y + 1)};
        const auto is_inside = [&](const Point& p) {
            return p.u >= 0.0 && p.v >= 0.0 && p.u <= u_end && p.v <= v_end;
        };
        if (std::ranges::all_of(pixel, is_inside))
            return 1.0;
        const double whole = inq_area(pixel);
        pixel = cut(pixel, [](const Point& p) { return p.u; });
        pixel = cut(pixel, [](const Point& p) { return p.v; });
        pixel = cut(pixel, [&](const Point& p) { return u_end - p.u; });
        pixel = cut(pixel, [&](const Point& p) { return v_end - p.v; });
        return inq_area(pixel) / whole;
    }

    static void add_sample(double* sum, const Layer& layer, double x, double y)
    {
        auto [u, v] = find(layer, x, y);
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
    std::vector<double> covers; // by the last layer
    std::vector<double> values;
};

} // namespace bench
