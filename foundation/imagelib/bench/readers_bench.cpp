#include "imagelib/bench/Pictures.h"
#include "imagelib/bench/TiffFiles.h"
#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/MipMap.h"

#include <benchmark/benchmark.h>

// A source of 2048 by 1556 with alpha from its file: with all its smaller copies by this library,
// and the samples alone by libtiff.

namespace {
using namespace bench;

enum Variant { PLAIN, COMPRESSED };

/// A source as this library writes it.
class SourceFile {
public:
    explicit SourceFile(const benchmark::State& state) : name(inq_file("source.bench"))
    {
        const auto writer = new_writer("TiffWriter", static_cast<int>(state.range(0)));
        path = writer->inq_path(name);
        writer->write_pixmap(name,
                             make_picture<std::uint8_t>(static_cast<int>(state.range(1))).get());
    }
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;
    ~SourceFile() { std::filesystem::remove(path.str()); }

    const KIVString& inq_path() const { return path; }

private:
    KIVString name;
    KIVString path;
};

void imagelib_source(benchmark::State& state)
{
    const SourceFile file(state);
    const std::size_t limit = BitmapProvider::inq_cache_limit();
    BitmapProvider::set_cache_limit(0);
    BitmapProvider_8 provider;
    const int id = provider.new_image_id(file.inq_path());
    for (auto _ : state) {
        MipMap* picture = provider.lock(id);
        if (!picture->inq_pixmap(1, 1) || !picture->inq_pixmap(SOURCE_WIDTH, SOURCE_HEIGHT))
            state.SkipWithError("not read");
        state.counters["megabytes"] = static_cast<double>(picture->inq_bytes()) / 1e6;
        provider.unlock(id);
    }
    BitmapProvider::set_cache_limit(limit);
}

void libtiff_source(benchmark::State& state)
{
    const SourceFile file(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(read_with_libtiff(file.inq_path().str()));
}

void sources(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"compressed", "picture"})->Unit(benchmark::kMillisecond);
    for (const int variant : {COMPRESSED, PLAIN})
        for (const int picture : {HALF_TRANSPARENT, CEL})
            bench->Args({variant, picture});
}
} // namespace

BENCHMARK(imagelib_source)->Apply(sources);
BENCHMARK(libtiff_source)->Apply(sources);
