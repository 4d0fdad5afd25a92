#include "imagelib/bench/TiffFiles.h"
#include "imagelib/hdr/TiffCompression.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>

// One frame of 1920 by 1080 as a file, by this library's writers and by libtiff. `kind` 0 is a
// frame of flat shapes with soft edges over nothing, 1 the same over a painted background.

namespace {
using bench::inq_file;
using bench::new_writer;

constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1080;

/// Noise as of a brush, the same in every run.
int grain_at(int x, int y)
{
    unsigned n = static_cast<unsigned>(x) * 374761393U + static_cast<unsigned>(y) * 668265263U;
    n = (n ^ (n >> 13)) * 1274126177U;
    return static_cast<int>((n ^ (n >> 16)) % 9) - 4;
}

struct Shape {
    double x, y, radius;
    int colour[3];
};
constexpr Shape SHAPES[] = {{600, 500, 330, {210, 60, 40}},  {1300, 620, 260, {250, 220, 120}},
                            {1000, 300, 140, {20, 20, 30}},  {620, 460, 90, {255, 255, 255}},
                            {1450, 250, 120, {60, 150, 90}}, {900, 800, 200, {120, 90, 160}}};

void draw_shapes(KIVPixmap& frame)
{
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x)
            for (const Shape& shape : SHAPES) {
                unsigned char* pixel = frame.inq_row(y) + x * 4;
                const double cover =
                    std::clamp(shape.radius - std::hypot(x - shape.x, y - shape.y), 0.0, 1.0);
                for (int c = 0; c < 4; ++c) {
                    const double value = c < 3 ? shape.colour[c] : 255;
                    pixel[c] =
                        static_cast<unsigned char>(pixel[c] * (1 - cover) + value * cover + 0.5);
                }
            }
}

void paint_background(KIVPixmap& frame)
{
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x) {
            unsigned char* pixel = frame.inq_row(y) + x * 4;
            for (int c = 0; c < 3; ++c)
                pixel[c] = static_cast<unsigned char>(110 + 60 * std::sin(x * 0.004 * (c + 1)) +
                                                      40 * std::cos(y * 0.006) + grain_at(x, y));
            pixel[3] = 255;
        }
}

const KIVPixmap& inq_frame(std::int64_t kind)
{
    static std::unique_ptr<KIVPixmap> frames[2];
    std::unique_ptr<KIVPixmap>& frame = frames[kind];
    if (frame)
        return *frame;
    frame = std::make_unique<KIVPixmap>(WIDTH, HEIGHT, PT_RGBA_8, nullptr, false);
    frame->clear();
    if (kind == 1)
        paint_background(*frame);
    draw_shapes(*frame);
    return *frame;
}

void note_and_remove(benchmark::State& state, const std::string& file)
{
    state.counters["megabytes"] = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    std::filesystem::remove(file);
}

void write_with_imagelib(benchmark::State& state, const char* writer_class, int variant,
                         int bits = 8)
{
    const KIVPixmap& frame = inq_frame(state.range(0));
    KIVPixmap copy(WIDTH, HEIGHT, PT_RGBA_8, nullptr, false);
    copy.copy(&frame, IntVector2(0, 0));
    copy.convert(4, bits);
    const std::string file = inq_file("frame.bench");
    for (auto _ : state) {
        if (!new_writer(writer_class, variant)->write_pixmap(file, &copy))
            state.SkipWithError("not written");
    }
    note_and_remove(state, file + (file.find(".bench") == std::string::npos ? ".tif" : ""));
}

void write_with_libtiff(benchmark::State& state, int scheme)
{
    const KIVPixmap& frame = inq_frame(state.range(0));
    const std::string file = inq_file("peer.bench");
    for (auto _ : state)
        bench::write_with_libtiff(file, frame, scheme);
    note_and_remove(state, file);
}

void imagelib_tiff(benchmark::State& state)
{
    write_with_imagelib(state, "TiffWriter", 1);
}

void imagelib_tiff_16(benchmark::State& state)
{
    write_with_imagelib(state, "TiffWriter", 1, 16);
}

void imagelib_tiff_lzw(benchmark::State& state)
{
    set_tiff_compression(TiffCompression::LZW);
    write_with_imagelib(state, "TiffWriter", 1);
    set_tiff_compression(TiffCompression::DEFLATE);
}

void imagelib_tiff_plain(benchmark::State& state)
{
    write_with_imagelib(state, "TiffWriter", 0);
}

void imagelib_png(benchmark::State& state)
{
    write_with_imagelib(state, "PngWriter", 0);
}

void imagelib_targa(benchmark::State& state)
{
    write_with_imagelib(state, "TargaWriter", 0);
}

void imagelib_pict(benchmark::State& state)
{
    write_with_imagelib(state, "PictWriter", 0);
}

void imagelib_cineon(benchmark::State& state)
{
    write_with_imagelib(state, "CinesiteWriter", 0);
}

void imagelib_yuv(benchmark::State& state)
{
    write_with_imagelib(state, "YUVWriter", 0);
}

void libtiff_deflate(benchmark::State& state)
{
    write_with_libtiff(state, COMPRESSION_ADOBE_DEFLATE);
}

void libtiff_lzw(benchmark::State& state)
{
    write_with_libtiff(state, COMPRESSION_LZW);
}

void libtiff_plain(benchmark::State& state)
{
    write_with_libtiff(state, COMPRESSION_NONE);
}

void both_frames(benchmark::internal::Benchmark* bench)
{
    bench->ArgName("kind")->Unit(benchmark::kMillisecond)->Arg(0)->Arg(1);
}
} // namespace

BENCHMARK(imagelib_tiff)->Apply(both_frames);
BENCHMARK(libtiff_deflate)->Apply(both_frames);
BENCHMARK(imagelib_tiff_lzw)->Apply(both_frames);
BENCHMARK(libtiff_lzw)->Apply(both_frames);
BENCHMARK(imagelib_tiff_plain)->Apply(both_frames);
BENCHMARK(libtiff_plain)->Apply(both_frames);
BENCHMARK(imagelib_tiff_16)->Apply(both_frames);
BENCHMARK(imagelib_png)->Apply(both_frames);
BENCHMARK(imagelib_targa)->Apply(both_frames);
BENCHMARK(imagelib_pict)->Apply(both_frames);
BENCHMARK(imagelib_cineon)->Apply(both_frames);
BENCHMARK(imagelib_yuv)->Apply(both_frames);
