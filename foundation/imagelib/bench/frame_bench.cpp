#include "imagelib/bench/Pictures.h"
#include "imagelib/bench/TiffFiles.h"

#include <QImage>
#include <QPainter>
#include <benchmark/benchmark.h>
#include <cairo.h>

// Layers drawn by this library and by other painters, with the same sources and placements.
// `psnr` compares what came out with the exact picture.

namespace {
using namespace bench;

enum Filter { UNFILTERED, FILTERED };

/// This library.
template <class Sample> class Ours {
public:
    Ours(int width, int height) : frame(width, height, type(), nullptr, false) {}

    void begin() { frame.clear(); }
    void draw(const Layer& layer, Filter filter) { bench::draw(frame, layer, filter == FILTERED); }
    void finish() { benchmark::DoNotOptimize(frame.inq_data()); }
    void write(const std::string& file) { new_writer("TiffWriter", 1)->write_pixmap(file, &frame); }
    const KIVPixmap& inq_frame() { return frame; }
    static bool can(const Layer&) { return true; }

private:
    static PixType type() { return sizeof(Sample) == 1 ? PT_RGBA_8 : PT_RGBA_16; }
    KIVPixmap frame;
};

/// Qt's raster painter.
template <class Sample> class QtRaster {
public:
    QtRaster(int width, int height)
        : frame(width, height, sizeof(Sample) == 1 ? PT_RGBA_8 : PT_RGBA_16, nullptr, false),
          image(wrap(frame))
    {}

    void begin() { image.fill(::Qt::transparent); }
    void draw(const Layer& layer, Filter filter)
    {
        const Placing& p = layer.placing;
        QPainter painter(&image);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, filter == FILTERED);
        painter.setRenderHint(QPainter::Antialiasing, filter == FILTERED);
        painter.setTransform(QTransform(p.cosine(), p.sine(), -p.sine(), p.cosine(), p.x, p.y));
        painter.drawImage(0, 0, wrap(const_cast<KIVPixmap&>(*layer.source)));
    }
    void finish() { benchmark::DoNotOptimize(image.bits()); }
    void write(const std::string& file) { write_with_libtiff(file, frame, COMPRESSION_LZW); }
    const KIVPixmap& inq_frame() { return frame; }

private:
    static QImage wrap(KIVPixmap& pixmap)
    {
        return {pixmap.inq_data(), pixmap.inq_width(), pixmap.inq_height(),
                static_cast<int>(pixmap.inq_row_bytes()),
                sizeof(Sample) == 1 ? QImage::Format_RGBA8888_Premultiplied
                                    : QImage::Format_RGBA64_Premultiplied};
    }
    KIVPixmap frame;
    QImage image;
};

/// Cairo counts the samples of a pixel the other way round, which is all the same to it.
class Cairo {
public:
    Cairo(int width, int height) : frame(width, height, PT_RGBA_8, nullptr, false)
    {
        surface = wrap(frame);
        context = cairo_create(surface);
    }
    ~Cairo()
    {
        cairo_destroy(context);
        cairo_surface_destroy(surface);
    }
    Cairo(const Cairo&) = delete;
    Cairo& operator=(const Cairo&) = delete;

    void begin() { frame.clear(); }
    void draw(const Layer& layer, Filter filter)
    {
        const Placing& p = layer.placing;
        cairo_surface_t* source = wrap(const_cast<KIVPixmap&>(*layer.source));
        cairo_matrix_t matrix;
        cairo_matrix_init(&matrix, p.cosine(), p.sine(), -p.sine(), p.cosine(), p.x, p.y);
        cairo_set_matrix(context, &matrix);
        cairo_set_source_surface(context, source, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(context),
                                 filter == FILTERED ? CAIRO_FILTER_BILINEAR : CAIRO_FILTER_NEAREST);
        cairo_paint(context);
        cairo_surface_destroy(source);
    }
    void finish() { cairo_surface_flush(surface); }
    const KIVPixmap& inq_frame() { return frame; }

private:
    static cairo_surface_t* wrap(KIVPixmap& pixmap)
    {
        return cairo_image_surface_create_for_data(pixmap.inq_data(), CAIRO_FORMAT_ARGB32,
                                                   pixmap.inq_width(), pixmap.inq_height(),
                                                   static_cast<int>(pixmap.inq_row_bytes()));
    }
    KIVPixmap frame;
    cairo_surface_t* surface;
    cairo_t* context;
};

template <class Painter>
void draw_all(Painter& painter, const std::vector<Layer>& layers, Filter filter)
{
    painter.begin();
    for (const Layer& layer : layers)
        painter.draw(layer, filter);
    painter.finish();
}

template <class Painter>
void report_fidelity(benchmark::State& state, Painter& painter, const std::vector<Layer>& layers,
                     Filter filter, int grid)
{
    draw_all(painter, layers, filter);
    ExactFrame exact(painter.inq_frame().inq_width(), painter.inq_frame().inq_height(), grid);
    for (const Layer& layer : layers)
        exact.draw(layer);
    state.counters["psnr"] = exact.inq_psnr(painter.inq_frame());
    state.counters["inside"] = exact.inq_psnr(painter.inq_frame(), ExactFrame::INSIDE);
}

enum Case { TURNED, SCALED, MOVED, SHRUNK };

Placing inq_placing(int wanted)
{
    switch (wanted) {
    case TURNED:
        return {0.92, 7.0, 190.3, -160.7};
    case SCALED:
        return {0.92, 0.0, 17.3, -100.7};
    case SHRUNK:
        return {0.6, 0.0, 200.3, 20.7};
    default:
        return {1.0, 0.0, -64.0, -200.0};
    }
}

/// One source over a frame of 1920 by 1080.
template <class Painter, class Sample, Filter FILTER> void place(benchmark::State& state)
{
    const auto source = make_picture<Sample>(static_cast<int>(state.range(1)));
    source->fix_pixels();
    const std::vector<Layer> layers = {
        {source.get(), inq_placing(static_cast<int>(state.range(0)))}};
    Painter painter(1920, 1080);
    painter.begin();
    painter.finish();
    for (auto _ : state) {
        painter.draw(layers[0], FILTER);
        painter.finish();
    }
    if (FILTER == FILTERED)
        report_fidelity(state, painter, layers, FILTER, state.range(0) == SHRUNK ? 6 : 1);
}

/// An opaque background and cels over it.
template <class Sample> class Stack {
public:
    Stack(int cels, int width)
    {
        constexpr int DISTINCT = 12;
        sources.push_back(make_picture<Sample>(OPAQUE));
        for (int i = 0; i < std::min(cels, DISTINCT); ++i)
            sources.push_back(make_picture<Sample>(CEL, i));
        for (const auto& source : sources)
            source->fix_pixels();
        const double fit = width / 1920.0;
        layers.push_back({sources[0].get(), {fit * 0.95, 0.0, fit * -10.3, fit * -100.7}});
        for (int i = 0; i < cels; ++i)
            layers.push_back({sources[static_cast<std::size_t>(1 + i % DISTINCT)].get(),
                              inq_cel_placing(i, width)});
    }

    const std::vector<Layer>& inq_layers() const { return layers; }

private:
    std::vector<std::unique_ptr<KIVPixmap>> sources;
    std::vector<Layer> layers;
};

template <class Painter, class Sample, Filter FILTER> void frame(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    const int width = static_cast<int>(state.range(1));
    const Stack<Sample> stack(n, width);
    Painter painter(width, width == 1920 ? 1080 : 3112);
    for (auto _ : state)
        draw_all(painter, stack.inq_layers(), FILTER);
    if (FILTER == FILTERED && width == 1920 && n <= 12)
        report_fidelity(state, painter, stack.inq_layers(), FILTER, 1);
}

/// A frame of 12 cels and its compressed file.
template <class Painter> void frame_and_file(benchmark::State& state)
{
    const Stack<std::uint8_t> stack(12, 1920);
    Painter painter(1920, 1080);
    const std::string file = inq_file("frame.bench") + ".tif";
    for (auto _ : state) {
        draw_all(painter, stack.inq_layers(), FILTERED);
        painter.write(file);
    }
    state.counters["megabytes"] = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    std::filesystem::remove(file);
}

void placements(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"placing", "picture"})->Unit(benchmark::kMillisecond);
    for (const int placing : {TURNED, SCALED, MOVED, SHRUNK})
        for (const int picture : {HALF_TRANSPARENT, CEL})
            bench->Args({placing, picture});
}

void frames(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"cels", "width"})->Unit(benchmark::kMillisecond);
    bench->Args({12, 1920})->Args({48, 1920})->Args({12, 4096});
}

using Byte = std::uint8_t;
using Word = std::uint16_t;
} // namespace

BENCHMARK(place<Ours<Byte>, Byte, FILTERED>)->Apply(placements);
BENCHMARK(place<QtRaster<Byte>, Byte, FILTERED>)->Apply(placements);
BENCHMARK(place<Ours<Byte>, Byte, UNFILTERED>)->Apply(placements);
BENCHMARK(place<QtRaster<Byte>, Byte, UNFILTERED>)->Apply(placements);
BENCHMARK(place<Cairo, Byte, UNFILTERED>)->Apply(placements);
BENCHMARK(place<Ours<Word>, Word, FILTERED>)->Apply(placements);
BENCHMARK(place<QtRaster<Word>, Word, FILTERED>)->Apply(placements);
BENCHMARK(frame<Ours<Byte>, Byte, FILTERED>)->Apply(frames);
BENCHMARK(frame<QtRaster<Byte>, Byte, FILTERED>)->Apply(frames);
BENCHMARK(frame<Ours<Word>, Word, FILTERED>)->Apply(frames);
BENCHMARK(frame<QtRaster<Word>, Word, FILTERED>)->Apply(frames);
BENCHMARK(frame_and_file<Ours<Byte>>)->Unit(benchmark::kMillisecond);
BENCHMARK(frame_and_file<QtRaster<Byte>>)->Unit(benchmark::kMillisecond);
