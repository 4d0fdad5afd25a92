#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/KIVColour.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TestProfile.h"

#include <benchmark/benchmark.h>
#include <random>

// A picture of 2048 by 1556 brought from sRGB to another profile, by this library and by the colour
// library alone, which knows nothing of alpha here. The arguments are the kind of the profile, the
// bits and the picture.

namespace {
constexpr int WIDTH = 2048;
constexpr int HEIGHT = 1556;

enum ProfileKind { SCREEN, TABLE };
enum Picture { NOISE, CEL };

ProfileData make_profile(ProfileKind kind)
{
    cmsHPROFILE screen = make_swapping_profile();
    if (kind == SCREEN)
        return take_data(screen);
    const ProfileData table = take_data(make_table_profile(screen));
    cmsCloseProfile(screen);
    return table;
}

/// A cel is a third covered, in flat colours with soft edges.
template <class Sample> void fill(KIVPixmap& pixmap, Picture picture)
{
    constexpr int FULL = std::numeric_limits<Sample>::max();
    constexpr int PATCH = 64;
    std::minstd_rand random(1);
    for (int y = 0; y < HEIGHT; ++y) {
        auto* pixel = reinterpret_cast<Sample*>(pixmap.inq_row(y));
        for (int x = 0; x < WIDTH; ++x, pixel += 4) {
            const int patch = x / PATCH + y / PATCH;
            const bool is_edge = x % PATCH == 0;
            const int alpha = picture == NOISE ? FULL : patch % 3 ? 0 : is_edge ? FULL / 2 : FULL;
            for (int c = 0; c < 3; ++c)
                pixel[c] =
                    static_cast<Sample>(picture == NOISE ? static_cast<int>(random() % (FULL + 1U))
                                                         : (patch * 7 + c * 13) % 64 * alpha / 64);
            pixel[3] = static_cast<Sample>(alpha);
        }
    }
}

std::unique_ptr<KIVPixmap> make_picture(const benchmark::State& state)
{
    const int bits = static_cast<int>(state.range(1));
    auto pixmap = std::make_unique<KIVPixmap>(WIDTH, HEIGHT, 4, bits, nullptr, false);
    const auto picture = static_cast<Picture>(state.range(2));
    bits == 8 ? fill<std::uint8_t>(*pixmap, picture) : fill<std::uint16_t>(*pixmap, picture);
    return pixmap;
}

template <class Transform> void run(benchmark::State& state, Transform transform)
{
    const auto source = make_picture(state);
    KIVPixmap pixmap(WIDTH, HEIGHT, source->inq_type(), nullptr, false);
    for (auto _ : state) {
        state.PauseTiming();
        pixmap.copy(source.get(), IntVector2(0, 0));
        state.ResumeTiming();
        transform(pixmap);
    }
    state.SetItemsProcessed(state.iterations() * WIDTH * HEIGHT);
}

void ours(benchmark::State& state)
{
    const TempFolder folder;
    folder.write("a.icc", as_text(make_profile(static_cast<ProfileKind>(state.range(0)))));
    ColourManager manager;
    manager.set_output_profile_path(folder.path("a.icc"));
    KIVPixmap first(1, 1, 4, static_cast<int>(state.range(1)), nullptr, false);
    first.set_colour(KIVColour(0.5));
    manager.bring_to_output(first, {}); // makes the tables
    run(state, [&](KIVPixmap& pixmap) { manager.bring_to_output(pixmap, {}); });
}

void lcms2(benchmark::State& state)
{
    const ProfileData data = make_profile(static_cast<ProfileKind>(state.range(0)));
    cmsHPROFILE to = cmsOpenProfileFromMem(data.data(), static_cast<cmsUInt32Number>(data.size()));
    cmsHPROFILE from = cmsCreate_sRGBProfile();
    const cmsUInt32Number format = state.range(1) == 8 ? TYPE_RGBA_8 : TYPE_RGBA_16;
    cmsHTRANSFORM way = cmsCreateTransform(from, format, to, format, INTENT_RELATIVE_COLORIMETRIC,
                                           cmsFLAGS_HIGHRESPRECALC);
    run(state, [&](KIVPixmap& pixmap) {
        const auto row = static_cast<cmsUInt32Number>(pixmap.inq_row_bytes());
        cmsDoTransformLineStride(way, pixmap.inq_data(), pixmap.inq_data(), WIDTH, HEIGHT, row, row,
                                 0, 0);
    });
    cmsDeleteTransform(way);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
}

void add_cases(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"profile", "bits", "picture"})
        ->ArgsProduct({{SCREEN, TABLE}, {8, 16}, {NOISE, CEL}})
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK(ours)->Apply(add_cases);
BENCHMARK(lcms2)->Apply(add_cases);
} // namespace
