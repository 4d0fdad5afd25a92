#include "imagelib/hdr/PixmapImage.h"
#include "imagelib/src/composite.h"
#include "imagelib/src/kernels.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/KIVColour.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {
using Rows = std::vector<std::vector<unsigned>>;

/// A pixmap of one colour.
class Filled : public KIVPixmap {
public:
    Filled(int width, int height, PixType type, const KIVColour& colour)
        : KIVPixmap(width, height, type, nullptr, false)
    {
        set_colour(colour);
    }
};

/// Draws with the source's bottom left, top left and top right corners at the points.
int draw(KIVPixmap& source, KIVPixmap& target, const Vector2 (&p)[3], bool filtered,
         double opacity = 1.0)
{
    PixmapImage image(&source);
    PixmapImage onto(&target);
    image.setOpacity(opacity);
    onto.setHighQuality(filtered);
    return image.compositeAffine(p[0].x(), p[0].y(), p[1].x(), p[1].y(), p[2].x(), p[2].y(), &onto,
                                 0);
}

void turn_about(const Vector2& centre, double degrees, double width, double height,
                Vector2 (&points)[3])
{
    const Vector2 corners[3] = {
        {-width / 2, -height / 2}, {-width / 2, height / 2}, {width / 2, height / 2}};
    for (int i = 0; i < 3; ++i)
        points[i] = centre + corners[i].rotate(degrees * 3.14159265358979 / 180.0);
}

/// The mean of a target pixel's area as the exact picture has it: sources are sampled between
/// their pixels, and the edge cuts pixels.
double exact_sample(const KIVPixmap& source, const KIVPixmap& before, const Vector2 (&p)[3], int x,
                    int y, int sample)
{
    constexpr int GRID = 6;
    const double most = source.inq_bits_per_sample() == 8 ? 255.0 : 65535.0;
    const Place across = {p[2].x() - p[1].x(), p[2].y() - p[1].y()};
    const Place down = {p[0].x() - p[1].x(), p[0].y() - p[1].y()};
    const double area = across.x * down.y - across.y * down.x;
    const int width = source.inq_width();
    const int height = source.inq_height();
    const Place corner = {p[1].x(), p[1].y()};
    double value = 0.0;
    double cover = 0.0;
    for (int i = 0; i < GRID * GRID; ++i) {
        const double dx = x + (i % GRID + 0.5) / GRID - corner.x;
        const double dy = before.inq_height() - y - (i / GRID + 0.5) / GRID - corner.y;
        const double u = (dx * down.y - dy * down.x) / area * width;
        const double v = (across.x * dy - across.y * dx) / area * height;
        if (u < 0 || v < 0 || u >= width || v >= height)
            continue;
        const double fu = std::clamp(u - 0.5, 0.0, width - 1.0);
        const double fv = std::clamp(v - 0.5, 0.0, height - 1.0);
        const int iu = std::min(static_cast<int>(fu), width - 2);
        const int iv = std::min(static_cast<int>(fv), height - 2);
        const auto mix = [&](int c) {
            const auto get = [&](int right, int below) {
                return static_cast<double>(inq_sample(source, iu + right, iv + below, c));
            };
            const double top = get(0, 0) + (get(1, 0) - get(0, 0)) * (fu - iu);
            const double low = get(0, 1) + (get(1, 1) - get(0, 1)) * (fu - iu);
            return top + (low - top) * (fv - iv);
        };
        value += mix(sample) / (GRID * GRID);
        cover += mix(3) / most / (GRID * GRID);
    }
    return value + inq_sample(before, x, y, sample) * (1.0 - cover);
}
} // namespace

TEST(KIVPixmap, is_empty_without_a_size_or_memory)
{
    for (const auto& [width, height] : {std::pair{0, 5}, {5, -1}, {1000000, 1000000}}) {
        KIVPixmap none(width, height, PT_RGBA_8, nullptr, false);
        EXPECT_EQ(none.inq_data(), nullptr);
        EXPECT_EQ(none.inq_width(), 0);
        none.set_colour(KIVColour(1.0));
        none.clear();
        none.composite(&none, IntVector2(0, 0));
        EXPECT_TRUE(none.convert(3, 16));
    }
}

TEST(KIVPixmap, keeps_colours_premultiplied_at_every_depth)
{
    Filled pixmap(3, 2, PT_RGBA_8, KIVColour(1.0, 0.5, 0.0, 0.5));
    EXPECT_EQ(inq_plane(pixmap, 0), Rows(2, {128, 128, 128}));
    EXPECT_EQ(inq_plane(pixmap, 1), Rows(2, {64, 64, 64}));
    EXPECT_TRUE(pixmap.convert(3, 16)); // over black
    EXPECT_EQ(pixmap.inq_type(), PT_RGB_16);
    EXPECT_EQ(inq_plane(pixmap, 0), Rows(2, {0x8080, 0x8080, 0x8080}));
    EXPECT_TRUE(pixmap.convert(4, 8));
    EXPECT_EQ(inq_plane(pixmap, 1), Rows(2, {64, 64, 64}));
    EXPECT_EQ(inq_plane(pixmap, 3), Rows(2, {255, 255, 255}));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pixmap.inq_row(1)) % 64, 0U);
}

TEST(KIVPixmap, copies_alpha_and_composites_over_and_cuts_both)
{
    Filled source(2, 2, PT_RGBA_8, KIVColour(1.0, 1.0, 1.0, 0.2));
    Filled target(3, 3, PT_RGBA_8, KIVColour(0.0));
    target.copy(&source, IntVector2(2, 2));
    target.composite(&source, IntVector2(-1, -1));
    EXPECT_EQ(inq_plane(target, 3), (Rows{{255, 255, 255}, {255, 255, 255}, {255, 255, 51}}));
    EXPECT_EQ(inq_plane(target, 0), (Rows{{51, 0, 0}, {0, 0, 0}, {0, 0, 51}}));
    target.copy(&source, IntVector2(3, 0));
    target.composite(&source, IntVector2(0, -2));
    EXPECT_EQ(inq_plane(target, 0), (Rows{{51, 0, 0}, {0, 0, 0}, {0, 0, 51}}));
}

TEST(KIVPixmap, composites_between_depths_and_onto_pixels_without_alpha)
{
    Filled source(300, 2, PT_RGBA_16, KIVColour(1.0, 0.0, 0.0, 0.6));
    for (const PixType type : {PT_RGB_8, PT_RGB_16, PT_RGBA_8}) {
        Filled target(300, 2, type, KIVColour(0.0, 0.0, 1.0));
        target.composite(&source, IntVector2(0, 0));
        const unsigned scale = type == PT_RGB_16 ? 0x101 : 1;
        EXPECT_EQ(inq_plane(target, 0), Rows(2, std::vector<unsigned>(300, 153 * scale)));
        EXPECT_EQ(inq_plane(target, 2), Rows(2, std::vector<unsigned>(300, 102 * scale)));
    }
}

TEST(KIVPixmap, resamples_a_quadrilateral)
{
    const auto source = make_soft_patch(40, 30, PT_RGBA_8);
    const std::unique_ptr<KIVPixmap> part(source->new_get_resampled(
        Vector2(10, 20), Vector2(30, 20), Vector2(30, 5), Vector2(10, 5), 20, 15));
    KIVPixmap expected(20, 15, PT_RGBA_8, nullptr, false);
    expected.copy(source.get(), IntVector2(-10, -10));
    EXPECT_EQ(inq_difference(*part, expected), 0U);
    const std::unique_ptr<KIVPixmap> beyond(source->new_get_resampled(
        Vector2(-40, 30), Vector2(0, 30), Vector2(0, 0), Vector2(-40, 0), 8, 8));
    EXPECT_EQ(inq_plane(*beyond, 3), Rows(8, std::vector<unsigned>(8, 0)));
}

TEST(Compositing, moves_by_whole_pixels_without_a_change)
{
    for (const PixType type : {PT_RGBA_8, PT_RGBA_16})
        for (const bool filtered : {false, true}) {
            const auto source = make_soft_patch(40, 30, type);
            Filled target(60, 50, type, KIVColour(0.2, 0.6, 0.4));
            Filled expected(60, 50, type, KIVColour(0.2, 0.6, 0.4));
            expected.composite(source.get(), IntVector2(7, 11));
            EXPECT_TRUE(draw(*source, target, {{7, 9}, {7, 39}, {47, 39}}, filtered));
            EXPECT_EQ(inq_difference(target, expected), 0U);
        }
}

TEST(Compositing, turns_flips_and_scales_as_the_exact_picture_does)
{
    struct Case {
        double degrees;
        double width;
        double height;
        Vector2 centre;
    };
    const Case cases[] = {{7.0, 80.0, 60.0, {48.3, 41.6}},   {7.0, 36.8, 27.6, {48.3, 41.6}},
                          {0.0, 37.3, 55.9, {50.2, 40.7}},   {0.0, -70.5, 61.0, {48.0, 40.0}},
                          {0.0, 25.7, 19.9, {50.2, 40.7}},   {0.0, -19.8, 27.1, {48.3, 40.4}},
                          {90.0, 40.0, 30.0, {48.3, 40.2}},  {200.0, 120.0, -90.0, {20.0, 30.0}},
                          {31.0, 640.0, 480.0, {48.0, 40.0}}};
    for (const PixType type : {PT_RGBA_8, PT_RGBA_16}) {
        const double unit = type == PT_RGBA_8 ? 1.0 : 257.0;
        const auto source = make_soft_patch(40, 30, type);
        for (int y = 0; y < 30; ++y) // smooth, so that few samples tell the area
            for (int x = 0; x < 40; ++x)
                for (int c = 0; c < 4; ++c)
                    set_sample(*source, x, y, c,
                               static_cast<unsigned>((c == 3 ? 90 + 4 * x : 2 * x + c * y) * unit));
        for (const Case& c : cases) {
            const Filled before(96, 80, type, KIVColour(0.2, 0.6, 0.4));
            Filled target(96, 80, type, KIVColour(0.2, 0.6, 0.4));
            Vector2 p[3];
            turn_about(c.centre, c.degrees, c.width, c.height, p);
            ASSERT_TRUE(draw(*source, target, p, true));
            double sum = 0.0;
            for (int y = 0; y < 80; ++y)
                for (int x = 0; x < 96; ++x) {
                    const double difference = inq_sample(target, x, y, 0) / unit -
                                              exact_sample(*source, before, p, x, y, 0) / unit;
                    sum += difference * difference;
                    EXPECT_LT(std::abs(difference), 4.0) << c.degrees << ": " << x << ", " << y;
                }
            EXPECT_LT(std::sqrt(sum / (96 * 80)), 0.45) << c.degrees << ", " << c.width;
        }
    }
}

TEST(Compositing, fills_a_frame_that_a_picture_just_fills)
{
    Filled source(10, 10, PT_RGBA_8, KIVColour(1.0));
    for (const double turn : {0.0, 90.0, 180.0}) {
        Filled target(64, 64, PT_RGBA_8, KIVColour(0, 0, 0, 0));
        Vector2 p[3];
        turn_about({32, 32}, turn, 64, 64, p);
        draw(source, target, p, true);
        EXPECT_EQ(inq_plane(target, 3), Rows(64, std::vector<unsigned>(64, 255)));
    }
}

TEST(Compositing, covers_pixels_as_far_as_the_edge_goes)
{
    Filled source(8, 8, PT_RGBA_8, KIVColour(1.0));
    Filled target(4, 3, PT_RGBA_8, KIVColour(0, 0, 0, 0));
    draw(source, target, {{0.5, 0.8}, {0.5, 2.0}, {2.8, 2.0}}, true);
    EXPECT_EQ(inq_plane(target, 3), (Rows{{0, 0, 0, 0}, {128, 255, 204, 0}, {26, 51, 41, 0}}));
}

TEST(Compositing, does_not_lose_a_picture_that_gets_small)
{
    Filled source(1000, 600, PT_RGBA_16, KIVColour(1.0));
    for (int y = 0; y < 600; ++y) // one line in four
        for (int x = 0; x < 1000; ++x)
            for (int c = 0; c < 4; ++c)
                set_sample(source, x, y, c, y % 4 ? 0 : 65535);
    Filled target(20, 20, PT_RGBA_16, KIVColour(0, 0, 0, 0));
    draw(source, target, {{4, 4}, {4, 16}, {16, 16}}, true);
    for (int y = 4; y < 16; ++y)
        for (int x = 4; x < 16; ++x)
            EXPECT_NEAR(inq_sample(target, x, y, 3), 16384, 700);
    EXPECT_EQ(inq_sample(target, 3, 8, 3), 0U);
}

TEST(Compositing, takes_the_nearest_pixel_at_low_quality)
{
    KIVPixmap source(2, 2, PT_RGBA_8, nullptr, false);
    for (int i = 0; i < 4; ++i)
        for (int c = 0; c < 4; ++c)
            set_sample(source, i % 2, i / 2, c, c == 3 ? 255 : static_cast<unsigned>(10 * (i + 1)));
    Filled target(6, 5, PT_RGBA_8, KIVColour(0, 0, 0, 0));
    draw(source, target, {{1, 0.4}, {1, 4.4}, {5, 4.4}}, false);
    EXPECT_EQ(inq_plane(target, 0), (Rows{{0, 0, 0, 0, 0, 0},
                                          {0, 10, 10, 20, 20, 0},
                                          {0, 10, 10, 20, 20, 0},
                                          {0, 30, 30, 40, 40, 0},
                                          {0, 30, 30, 40, 40, 0}}));
    Filled turned(4, 4, PT_RGBA_8, KIVColour(0, 0, 0, 0));
    draw(source, turned, {{4, 0}, {0, 0}, {0, 4}},
         false); // turned, and its back to us
    EXPECT_EQ(inq_plane(turned, 0),
              (Rows{{20, 20, 40, 40}, {20, 20, 40, 40}, {10, 10, 30, 30}, {10, 10, 30, 30}}));
}

TEST(Compositing, takes_it_from_a_card_that_is_seen_from_its_edge)
{
    KIVPixmap card(4000, 3, PT_RGBA_8, nullptr, false);
    card.clear();
    for (int x = 1990; x < 2010; ++x)
        for (int y = 0; y < 3; ++y)
            set_sample(card, x, y, 3, 77);
    Filled target(12, 3, PT_RGBA_8, KIVColour(0, 0, 0, 0));
    draw(card, target, {{5.49925, 0}, {5.49925, 3}, {5.50075, 3}}, false);
    std::vector<unsigned> row(12, 0);
    row[5] = 77;
    EXPECT_EQ(inq_plane(target, 3), Rows(3, row));
}

TEST(Compositing, dims_by_opacity)
{
    Filled source(6, 6, PT_RGBA_8, KIVColour(1.0));
    for (const double shift : {0.0, 0.5}) {
        Filled target(10, 10, PT_RGBA_8, KIVColour(0, 0, 0, 0));
        draw(source, target, {{2 + shift, 2}, {2 + shift, 8}, {8 + shift, 8}}, true, 0.4);
        EXPECT_EQ(inq_sample(target, 5, 5, 0), 102U);
        EXPECT_EQ(inq_sample(target, 5, 5, 3), 102U);
    }
}

TEST(Compositing, refuses_what_has_no_area_or_no_place)
{
    Filled source(6, 6, PT_RGBA_8, KIVColour(1.0));
    Filled target(10, 10, PT_RGBA_8, KIVColour(0, 0, 0, 0));
    const double nan = std::nan("");
    EXPECT_FALSE(draw(source, target, {{2, 2}, {2, 2}, {8, 2}}, true));
    EXPECT_FALSE(draw(source, target, {{2, nan}, {2, 5}, {8, 2}}, true));
    EXPECT_FALSE(draw(source, target, {{2, 0}, {2, 1e300}, {8, 2}}, true));
    EXPECT_TRUE(draw(source, target, {{5e8, 2}, {5e8, 8}, {5e8 + 6, 8}}, true));
    EXPECT_TRUE(draw(source, target, {{5, 2.5}, {5, 8}, {5.001, 8}}, true)); // a hair
    EXPECT_EQ(inq_sample(target, 8, 5, 3), 0U);
    draw(source, target, {{-9e8, -9e8}, {9e8, 9e8}, {9e8, 9e8 - 1e-6}}, true);
    target.clear();
    Filled dot(1, 1, PT_RGBA_8, KIVColour(1.0));
    EXPECT_TRUE(draw(dot, target, {{-5e8, -5e8}, {-5e8, 5e8}, {5e8, 5e8}}, true));
    EXPECT_EQ(inq_plane(target, 3), Rows(10, std::vector<unsigned>(10, 255)));
}

namespace {
template <class Sample> struct Noise {
    static constexpr int WIDTH = 61;
    static constexpr int HEIGHT = 47;
    std::mt19937 random{7};
    std::vector<Sample> pixels = std::vector<Sample>(4 * WIDTH * HEIGHT);

    Noise()
    {
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            const unsigned kind = random() % 4; // runs of nothing and of all, as in a drawing
            const auto alpha = static_cast<Sample>(kind == 0 || i % 512 < 128   ? 0
                                                   : kind == 1 || i % 512 > 400 ? ~0U
                                                                                : random());
            for (std::size_t c = 0; c < 3; ++c)
                pixels[i + c] = static_cast<Sample>(random() % (alpha + 1U));
            pixels[i + 3] = alpha;
        }
    }
    SourcePixels source() const
    {
        return {reinterpret_cast<const unsigned char*>(pixels.data()), 4 * WIDTH * sizeof(Sample),
                WIDTH, HEIGHT};
    }
};

/// The plain loops and those with vectors.
template <class Sample> struct BothKernels {
    const Kernels<Sample>& plain = inq_plain_kernels<Sample>();
    const Kernels<Sample>* fast = inq_avx2_kernels<Sample>();
    Noise<Sample> noise;
    std::vector<Sample> a = std::vector<Sample>(4 * 64, 9);
    std::vector<Sample> b = a;
    std::vector<Mixed<Sample>> mixed_a = std::vector<Mixed<Sample>>(4 * 64, 1);
    std::vector<Mixed<Sample>> mixed_b = mixed_a;

    const Sample* inq_row(int y) const { return noise.pixels.data() + 4 * noise.WIDTH * y; }

    void compare_walks(int count)
    {
        constexpr std::int64_t ONE = std::int64_t{1} << 32;
        const SourceWalk walk = {ONE * 3 + 123456789, ONE * 5 + 987654321, ONE * 2 + 55555555,
                                 ONE + 777777777};
        plain.sample_nearest(a.data(), noise.source(), walk, count);
        fast->sample_nearest(b.data(), noise.source(), walk, count);
        EXPECT_EQ(a, b) << "nearest " << count;
        plain.sample_bilinear(a.data(), noise.source(), walk, count);
        fast->sample_bilinear(b.data(), noise.source(), walk, count);
        EXPECT_EQ(a, b) << "bilinear " << count;
    }

    void compare_level_rows(int count)
    {
        mixed_b = mixed_a;
        EXPECT_EQ(plain.mix_rows(mixed_a.data(), inq_row(9), inq_row(10), 0x9ABCDEF0, count),
                  fast->mix_rows(mixed_b.data(), inq_row(9), inq_row(10), 0x9ABCDEF0, count));
        EXPECT_EQ(mixed_a, mixed_b) << "rows " << count;
        std::vector<int> columns;
        std::vector<std::uint32_t> fractions;
        for (int i = 0; i < count; ++i) {
            columns.push_back((i * 7) % 50);
            fractions.push_back(static_cast<std::uint32_t>(noise.random()));
        }
        plain.mix_rows(mixed_a.data(), inq_row(9), inq_row(10), 0x12345678, 60);
        plain.mix_columns(a.data(), mixed_a.data(), {columns.data(), fractions.data()}, count);
        fast->mix_columns(b.data(), mixed_a.data(), {columns.data(), fractions.data()}, count);
        EXPECT_EQ(a, b) << "columns " << count;
        plain.pick(a.data(), inq_row(9), {columns.data(), fractions.data()}, count);
        fast->pick(b.data(), inq_row(9), {columns.data(), fractions.data()}, count);
        EXPECT_EQ(a, b) << "pick " << count;
    }

    void compare_whole_pixels(const Sample* const rows[TAPS], int count)
    {
        plain.over(a.data(), rows[0], count);
        fast->over(b.data(), rows[0], count);
        EXPECT_EQ(a, b) << "over " << count;
        plain.average(a.data(), rows, count);
        fast->average(b.data(), rows, count);
        EXPECT_EQ(a, b) << "average " << count;
        plain.halve(a.data(), rows[0], rows[1], count);
        fast->halve(b.data(), rows[0], rows[1], count);
        EXPECT_EQ(a, b) << "halve " << count;
        const auto* block = reinterpret_cast<const unsigned char*>(rows[0]);
        EXPECT_EQ(plain.look_at_block(block, 4 * sizeof(Sample)),
                  fast->look_at_block(block, 4 * sizeof(Sample)));
    }

    void compare_shares(const Sample* const rows[TAPS], int count)
    {
        std::vector<Taps<Sample>> taps;
        for (int i = 0; i < 32; ++i)
            taps.push_back({(i * 5) % 56, {0.1F, 0.3F, 0.01F * static_cast<float>(i), 0.25F}});
        mixed_b = mixed_a;
        for (int row_count = 1; row_count <= TAPS; ++row_count) {
            EXPECT_EQ(plain.weigh_rows(mixed_a.data(), rows, taps[0].shares, row_count, count),
                      fast->weigh_rows(mixed_b.data(), rows, taps[0].shares, row_count, count));
            EXPECT_EQ(mixed_a, mixed_b) << "weighed rows " << count;
        }
        plain.weigh_rows(mixed_a.data(), rows, taps[1].shares, TAPS, 60);
        plain.weigh_columns(a.data(), mixed_a.data(), taps.data(), count);
        fast->weigh_columns(b.data(), mixed_a.data(), taps.data(), count);
        EXPECT_EQ(a, b) << "weighed columns " << count;
    }
};

template <class Sample> void compare_kernels()
{
    BothKernels<Sample> both;
    if (!both.fast)
        GTEST_SKIP() << "the processor has no vector kernels";
    for (const int count : {0, 1, 3, 4, 7, 8, 9, 23}) {
        both.compare_walks(count);
        both.compare_level_rows(count);
        for (int y = 0; y < both.noise.HEIGHT - TAPS; ++y) {
            const Sample* const rows[TAPS] = {both.inq_row(y), both.inq_row(y + 1),
                                              both.inq_row(y + 2), both.inq_row(y + 3)};
            both.compare_whole_pixels(rows, count);
            both.compare_shares(rows, count);
        }
    }
}
} // namespace

TEST(Kernels, give_the_same_bits_on_every_processor_at_8_bits)
{
    compare_kernels<std::uint8_t>();
}

TEST(Kernels, give_the_same_bits_on_every_processor_at_16_bits)
{
    compare_kernels<std::uint16_t>();
}
