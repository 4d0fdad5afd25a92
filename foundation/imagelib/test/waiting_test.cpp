#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/PixmapImage.h"
#include "imagelib/src/PixmapDrawing.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/KIVColour.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace {
unsigned below(std::mt19937& random, unsigned most)
{
    return static_cast<unsigned>(random() % most);
}

/// A picture with a transparent border, an opaque middle and something in between.
std::unique_ptr<KIVPixmap> make_cel(int width, int height, PixType type, std::mt19937& random)
{
    auto cel = std::make_unique<KIVPixmap>(width, height, type, nullptr, false);
    const unsigned full = type == PT_RGBA_8 ? 0xFF : 0xFFFF;
    const bool is_card = random() % 3 == 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int away = std::min({x, y, width - x, height - y});
            const unsigned alpha = is_card || away > 60 ? full
                                   : away > 25          ? below(random, full)
                                                        : 0;
            for (int c = 0; c < 3; ++c)
                set_sample(*cel, x, y, c, alpha == 0 ? 0 : below(random, alpha));
            set_sample(*cel, x, y, 3, alpha);
        }
    return cel;
}

/// Draws the same layers twice: on pixels that are told at once, and on some that wait.
class BothWays {
public:
    BothWays(PixType type, PixType source_type, unsigned seed)
        : random(seed), source_type(source_type), all_waits(has_alpha(type) && source_type == type),
          now(new_picture(type)), later(new_picture(type))
    {}

    /// True if that leaves the picture empty.
    bool fill()
    {
        const double alpha = 2.0 * share() - 0.5;
        const KIVColour colour(share(), share(), share(), alpha);
        both([&](KIVPixmap& target) { target.set_colour(colour); });
        const PixType type = now->inq_type();
        drawn = {[=](KIVPixmap& target, const IntVector2& at) {
            const auto card = new_picture(type);
            card->set_colour(colour);
            target.composite(card.get(), at);
        }};
        return alpha <= 0.0;
    }

    void draw_a_layer()
    {
        const std::shared_ptr<KIVPixmap> cel =
            make_cel(pick(30, 400), pick(30, 300), source_type, random);
        const double turn = random() % 3 ? 7.0 * share() : 0.0;
        const double scale = random() % 3 ? 0.4 + 1.8 * share() : 1.0;
        const Vector2 corner(std::floor(pick(-200, WIDTH)) + (random() % 2 ? share() : 0.0),
                             pick(-100, HEIGHT));
        const Vector2 up = Vector2(0.0, cel->inq_height() * scale).rotate(turn);
        const Vector2 across = Vector2(cel->inq_width() * scale, 0.0).rotate(turn);
        const bool filtered = random() % 4 != 0;
        const double opacity = random() % 5 ? 1.0 : share();
        drawn.push_back([=](KIVPixmap& target, const IntVector2& at) {
            PixmapImage image(cel.get());
            PixmapImage onto(&target);
            image.setOpacity(opacity);
            onto.setHighQuality(filtered);
            const Vector2 low = corner + Vector2(IntVector2(at.x(), -at.y()));
            const Vector2 left = low + up;
            const Vector2 right = left + across;
            image.compositeAffine(low.x(), low.y(), left.x(), left.y(), right.x(), right.y(), &onto,
                                  0);
            cel->fix_pixels(); // for the second time
        });
        both([&](KIVPixmap& target) { drawn.back()(target, IntVector2()); });
    }

    /// Draws what is there on another picture, and goes on with that. What waits comes out as if it
    /// had been drawn there.
    void draw_on_another()
    {
        if (!all_waits)
            later->inq_data();
        const PixType type = now->inq_type();
        const std::unique_ptr<KIVPixmap> old_now = std::exchange(now, new_picture(type));
        KIVPixmap* old_later = std::exchange(later, new_picture(type)).release();
        const std::vector<Draw> old_drawn = std::exchange(drawn, {});
        const IntVector2 place(pick(-40, 40), pick(-40, 40));
        const bool is_empty = fill();
        const bool copies = flip(2);
        copies ? later->copy_and_delete(old_later, place)
               : later->composite_and_delete(old_later, place);
        all_waits = all_waits && (is_empty || !copies);
        if (!all_waits)
            return copies ? now->copy(old_now.get(), place) : now->composite(old_now.get(), place);
        drawn.push_back([=](KIVPixmap& target, const IntVector2& at) {
            draw_within(target, old_drawn, at + place);
        });
        drawn.back()(*now, IntVector2());
    }

    unsigned inq_difference()
    {
        all_waits = false;
        return ::inq_difference(*now, *later);
    }
    bool flip(unsigned one_in) { return random() % one_in == 0; }

private:
    static constexpr int WIDTH = 700;
    static constexpr int HEIGHT = 150;

    /// Draws a layer as if the top left pixel of its picture were at the place.
    using Draw = std::function<void(KIVPixmap&, const IntVector2&)>;

    static std::unique_ptr<KIVPixmap> new_picture(PixType type)
    {
        return std::make_unique<KIVPixmap>(WIDTH, HEIGHT, type, nullptr, false);
    }

    /// Leaves alone what lies outside of the picture.
    static void draw_within(KIVPixmap& target, const std::vector<Draw>& layers,
                            const IntVector2& at)
    {
        const auto whole = new_picture(target.inq_type());
        whole->copy(&target, IntVector2());
        for (const Draw& draw : layers) {
            draw(*whole, at);
            ASSERT_NE(whole->inq_data(), nullptr);
        }
        const auto part = new_picture(target.inq_type());
        part->copy(whole.get(), IntVector2() - at);
        target.copy(part.get(), at);
    }

    template <class Do> void both(Do draw)
    {
        draw(*now);
        ASSERT_NE(now->inq_data(), nullptr);
        draw(*later);
    }
    double share() { return static_cast<double>(random() % 1000) / 1000.0; }
    int pick(int from, int to)
    {
        return from + static_cast<int>(random() % static_cast<unsigned>(to - from));
    }

    std::mt19937 random;
    const PixType source_type;
    bool all_waits; // in `later`, and can so go on
    std::vector<Draw> drawn;
    std::unique_ptr<KIVPixmap> now;
    std::unique_ptr<KIVPixmap> later;
};
} // namespace

TEST(WaitingLayers, come_out_bit_for_bit_as_if_drawn_at_once)
{
    for (const PixType type : {PT_RGBA_8, PT_RGB_8, PT_RGBA_16, PT_RGB_16})
        for (unsigned seed = 1; seed <= 12; ++seed) {
            BothWays pictures(type, seed % 4 ? make_pix_type(4, inq_bits(type)) : PT_RGBA_8, seed);
            pictures.fill();
            for (int i = 0; i < 9; ++i) {
                pictures.draw_a_layer();
                if (pictures.flip(5))
                    pictures.draw_on_another();
                if (pictures.flip(10)) {
                    ASSERT_EQ(pictures.inq_difference(), 0U) << seed << ", layer " << i;
                }
            }
            ASSERT_EQ(pictures.inq_difference(), 0U) << "type " << type << ", seed " << seed;
        }
}

TEST(WaitingLayers, keep_the_pixels_of_a_source_that_goes_or_changes)
{
    std::mt19937 random{3};
    for (const bool goes : {true, false}) {
        std::unique_ptr<KIVPixmap> cel = make_cel(80, 60, PT_RGBA_8, random);
        KIVPixmap expected(100, 70, PT_RGBA_8, nullptr, false);
        expected.clear();
        expected.composite(cel.get(), IntVector2(5, 5));
        EXPECT_NE(expected.inq_data(), nullptr);
        KIVPixmap target(100, 70, PT_RGBA_8, nullptr, false);
        target.clear();
        cel->fix_pixels();
        target.composite(cel.get(), IntVector2(5, 5));
        goes ? cel.reset() : cel->set_colour(KIVColour(1.0));
        EXPECT_EQ(inq_difference(target, expected), 0U);
    }
}

TEST(WaitingLayers, leave_holes_where_a_copy_made_them)
{
    auto* card = new KIVPixmap(64, 64, PT_RGBA_8, nullptr, false);
    card->set_colour(KIVColour(0.5));
    auto* copied = new KIVPixmap(40, 40, PT_RGBA_8, nullptr, false);
    copied->clear();
    card->copy_and_delete(copied, IntVector2(0, 0));
    KIVPixmap target(64, 64, PT_RGBA_8, nullptr, false);
    target.set_colour(KIVColour(1.0, 0.0, 0.0));
    target.composite_and_delete(card, IntVector2(0, 0));
    EXPECT_EQ(inq_sample(target, 36, 36, 0), 255U);
    EXPECT_EQ(inq_sample(target, 36, 36, 3), 255U);
}

namespace {
class Impatient : public AbortPanel {
public:
    bool inq_abort() override { return ++n_asked > 2; }
    int n_asked = 0;
};
} // namespace

TEST(WaitingLayers, stop_where_the_panel_says_so)
{
    KIVPixmap target(100, 500, PT_RGBA_8, nullptr, false);
    target.clear();
    Impatient panel;
    EXPECT_FALSE(target.finish_drawing(&panel));
    EXPECT_EQ(panel.n_asked, 3);
    EXPECT_TRUE(target.finish_drawing(&panel)) << "nothing waits any more";
}
