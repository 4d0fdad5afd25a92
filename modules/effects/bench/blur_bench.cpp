#include "effects/src/gaussian_blur.h"
#include "imagelib/hdr/KIVPixmap.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <limits>

// A frame softened: a picture that fills it, and a cel that is painted in a third of it.

namespace {
constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1080;

constexpr double PIXELS_IN_RADIUS = 0.5; // of a standard deviation

enum Picture { FULL, CEL };

template <class Sample> void paint(KIVPixmap& picture, int kind)
{
    constexpr int MOST = std::numeric_limits<Sample>::max();
    picture.clear();
    const int begin = kind == CEL ? picture.inq_width() / 3 : 0;
    const int end = kind == CEL ? 2 * begin : picture.inq_width();
    for (int y = 0; y < picture.inq_height(); ++y) {
        auto* pixel = reinterpret_cast<Sample*>(picture.inq_row(y)) + 4 * begin;
        for (int x = begin; x < end; ++x, pixel += 4) {
            for (int c = 0; c < 3; ++c)
                pixel[c] = static_cast<Sample>(MOST / 256 * ((x * (c + 3) + y * 5) % 256));
            pixel[3] = static_cast<Sample>(MOST);
        }
    }
}

template <class Sample> void blur(benchmark::State& state)
{
    const PixType type = sizeof(Sample) == 1 ? PT_RGBA_8 : PT_RGBA_16;
    const BlurAxis axis(static_cast<double>(state.range(0)) * PIXELS_IN_RADIUS);
    const int border = axis.inq_border();
    KIVPixmap source(WIDTH + 2 * border, HEIGHT + 2 * border, type, nullptr, false);
    KIVPixmap target(WIDTH, HEIGHT, type, nullptr, false);
    paint<Sample>(source, static_cast<int>(state.range(1)));
    for (auto _ : state) {
        blur_gaussian(target, source, IntVector2(border, border), axis, axis, nullptr);
        benchmark::DoNotOptimize(target.inq_data());
    }
}

void blur_8(benchmark::State& state)
{
    blur<std::uint8_t>(state);
}

void blur_16(benchmark::State& state)
{
    blur<std::uint16_t>(state);
}

/// The floor: as many bytes read and written.
template <class Sample> void copy(benchmark::State& state)
{
    const PixType type = sizeof(Sample) == 1 ? PT_RGBA_8 : PT_RGBA_16;
    KIVPixmap source(WIDTH, HEIGHT, type, nullptr, false);
    KIVPixmap target(WIDTH, HEIGHT, type, nullptr, false);
    source.clear();
    for (auto _ : state) {
        std::memcpy(target.inq_data(), source.inq_data(), source.inq_bytes());
        benchmark::DoNotOptimize(target.inq_data());
    }
}

void copy_8(benchmark::State& state)
{
    copy<std::uint8_t>(state);
}

void copy_16(benchmark::State& state)
{
    copy<std::uint16_t>(state);
}

void all_radii(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"radius", "picture"})->Unit(benchmark::kMillisecond);
    for (const int radius : {2, 6, 10, 20, 50, 200})
        for (const int picture : {FULL, CEL})
            bench->Args({radius, picture});
}
} // namespace

BENCHMARK(copy_8)->Unit(benchmark::kMillisecond);
BENCHMARK(copy_16)->Unit(benchmark::kMillisecond);
BENCHMARK(blur_8)->Apply(all_radii);
BENCHMARK(blur_16)->Apply(all_radii);
