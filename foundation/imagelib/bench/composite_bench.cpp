#include "imagelib/bench/Pictures.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/reduce.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <pixman.h>

// One picture placed over a frame, by this library and by pixman on the same pixels. The arguments
// choose the placement and the picture.

namespace {
constexpr int FRAME_WIDTH = 1920;
constexpr int FRAME_HEIGHT = 1080;

enum Placing { TURNED, SCALED, MOVED, SHRUNK, LEVEL_50, LEVEL_60, LEVEL_70, LEVEL_80, LEVEL_90 };
using bench::CEL;
using bench::HALF_TRANSPARENT;
using bench::make_picture;
using bench::OPAQUE;
using bench::SOURCE_HEIGHT;
using bench::SOURCE_WIDTH;

bench::Placing inq_placing(int placing)
{
    switch (placing) {
    case TURNED:
        return {0.92, 7.0, 90.3, -160.7};
    case SCALED:
        return {0.92, 0.0, 17.3, -100.7};
    case SHRUNK:
        return {0.6, 7.0, 400.3, 20.7};
    case LEVEL_50:
    case LEVEL_60:
    case LEVEL_70:
    case LEVEL_80:
    case LEVEL_90:
        return {0.503 + 0.1 * (placing - LEVEL_50), 0.0, 17.3, 20.7};
    default:
        return {1.0, 0.0, -64.0, -200.0};
    }
}

template <class Sample> void draw_with_imagelib(benchmark::State& state, bool filtered)
{
    const auto source = make_picture<Sample>(static_cast<int>(state.range(1)));
    source->fix_pixels(); // as a provider's are
    KIVPixmap frame(FRAME_WIDTH, FRAME_HEIGHT, source->inq_type(), nullptr, false);
    frame.clear();
    const bench::Layer layer = {source.get(), inq_placing(static_cast<int>(state.range(0)))};
    for (auto _ : state) {
        bench::draw(frame, layer, filtered);
        benchmark::DoNotOptimize(frame.inq_data());
    }
}

void imagelib_8_filtered(benchmark::State& state)
{
    draw_with_imagelib<std::uint8_t>(state, true);
}

void imagelib_8_unfiltered(benchmark::State& state)
{
    draw_with_imagelib<std::uint8_t>(state, false);
}

void imagelib_16_filtered(benchmark::State& state)
{
    draw_with_imagelib<std::uint16_t>(state, true);
}

void imagelib_16_unfiltered(benchmark::State& state)
{
    draw_with_imagelib<std::uint16_t>(state, false);
}

pixman_image_t* wrap(KIVPixmap& pixmap)
{
    return pixman_image_create_bits(PIXMAN_a8b8g8r8, pixmap.inq_width(), pixmap.inq_height(),
                                    reinterpret_cast<std::uint32_t*>(pixmap.inq_data()),
                                    static_cast<int>(pixmap.inq_row_bytes()));
}

/// Weighs all pixels of the source that a pixel of a smaller picture stands for.
void weigh_all_pixels(pixman_image_t* image, double scale)
{
    const pixman_fixed_t step = pixman_double_to_fixed(1.0 / scale);
    int count = 0;
    pixman_fixed_t* const parameters = pixman_filter_create_separable_convolution(
        &count, step, step, PIXMAN_KERNEL_LINEAR, PIXMAN_KERNEL_LINEAR, PIXMAN_KERNEL_BOX,
        PIXMAN_KERNEL_BOX, 4, 4);
    pixman_image_set_filter(image, PIXMAN_FILTER_SEPARABLE_CONVOLUTION, parameters, count);
    std::free(parameters);
}

void draw_with_pixman(benchmark::State& state, pixman_filter_t filter)
{
    const bench::Placing p = inq_placing(static_cast<int>(state.range(0)));
    const auto source = make_picture<std::uint8_t>(static_cast<int>(state.range(1)));
    KIVPixmap frame(FRAME_WIDTH, FRAME_HEIGHT, PT_RGBA_8, nullptr, false);
    frame.clear();
    pixman_image_t* image = wrap(*source);
    pixman_image_t* target = wrap(frame);
    pixman_f_transform_t back;
    pixman_f_transform_init_translate(&back, -p.x, -p.y);
    pixman_f_transform_rotate(&back, nullptr, p.cosine() / p.scale, -p.sine() / p.scale);
    pixman_f_transform_scale(&back, nullptr, 1.0 / p.scale, 1.0 / p.scale);
    pixman_transform_t fixed;
    pixman_transform_from_pixman_f_transform(&fixed, &back);
    pixman_image_set_transform(image, &fixed);
    if (filter == PIXMAN_FILTER_SEPARABLE_CONVOLUTION)
        weigh_all_pixels(image, p.scale);
    else
        pixman_image_set_filter(image, filter, nullptr, 0);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, image, nullptr, target, 0, 0, 0, 0, 0, 0,
                                 FRAME_WIDTH, FRAME_HEIGHT);
        benchmark::DoNotOptimize(frame.inq_data());
    }
    pixman_image_unref(image);
    pixman_image_unref(target);
}

void pixman_8_filtered(benchmark::State& state)
{
    draw_with_pixman(state, PIXMAN_FILTER_BILINEAR);
}

void pixman_8_unfiltered(benchmark::State& state)
{
    draw_with_pixman(state, PIXMAN_FILTER_NEAREST);
}

void pixman_8_weighed(benchmark::State& state)
{
    draw_with_pixman(state, PIXMAN_FILTER_SEPARABLE_CONVOLUTION);
}

void all_placements(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"placing", "picture"})->Unit(benchmark::kMillisecond);
    for (int placing = TURNED; placing <= LEVEL_90; ++placing)
        for (const int picture : {HALF_TRANSPARENT, CEL, OPAQUE})
            bench->Args({placing, picture});
}

/// Half of a picture with even sides, and with odd ones.
template <class Sample> void halve(benchmark::State& state)
{
    const int odd = static_cast<int>(state.range(0));
    const auto source = make_picture<Sample>(OPAQUE);
    KIVPixmap picture(SOURCE_WIDTH - odd, SOURCE_HEIGHT - odd, source->inq_type(), nullptr, false);
    picture.copy(source.get(), IntVector2(0, 0));
    for (auto _ : state)
        benchmark::DoNotOptimize(make_reduced(picture, true, true));
}

void imagelib_8_halved(benchmark::State& state)
{
    halve<std::uint8_t>(state);
}

void imagelib_16_halved(benchmark::State& state)
{
    halve<std::uint16_t>(state);
}

void even_and_odd(benchmark::internal::Benchmark* bench)
{
    bench->ArgName("odd")->Unit(benchmark::kMillisecond)->Arg(0)->Arg(1);
}
} // namespace

BENCHMARK(imagelib_8_halved)->Apply(even_and_odd);
BENCHMARK(imagelib_16_halved)->Apply(even_and_odd);
BENCHMARK(imagelib_8_filtered)->Apply(all_placements);
BENCHMARK(pixman_8_filtered)->Apply(all_placements);
BENCHMARK(imagelib_8_unfiltered)->Apply(all_placements);
BENCHMARK(pixman_8_unfiltered)->Apply(all_placements);
BENCHMARK(pixman_8_weighed)->Apply(all_placements);
BENCHMARK(imagelib_16_filtered)->Apply(all_placements);
BENCHMARK(imagelib_16_unfiltered)->Apply(all_placements);
