#include "curveslib/hdr/Fairing.h"

#include <gtest/gtest.h>
#include <random>

namespace {
/// Each half, stretched between the heights of its ends, is what the whole was there.
void expect_same_curve_after_split(const Fairing& fairing, int cut)
{
    Fairing whole(fairing.number_between);
    fairing.copy_into(&whole);
    const int frames = fairing.number_between + 1;
    const std::unique_ptr<Fairing> later(whole.split(cut));
    EXPECT_EQ(whole.number_between, cut - 1);
    EXPECT_EQ(later->number_between, frames - 1 - cut);
    const double height = fairing.get_height(cut);
    for (int i = 0; i <= cut; ++i)
        EXPECT_NEAR(whole.get_height(i) * height, fairing.get_height(i), 1e-9) << cut << ' ' << i;
    for (int i = cut; i <= frames; ++i)
        EXPECT_NEAR(height + later->get_height(i - cut) * (1.0 - height), fairing.get_height(i),
                    1e-9)
            << cut << ' ' << i;
}

class HalfFrame {
public:
    HalfFrame() { Fairing::set_half_frame(true); }
    HalfFrame(const HalfFrame&) = delete;
    HalfFrame& operator=(const HalfFrame&) = delete;
    ~HalfFrame() { Fairing::set_half_frame(false); }
};
} // namespace

TEST(Fairing, reads_half_a_frame_late_for_a_second_field)
{
    const Fairing fairing(3);
    const HalfFrame on;
    EXPECT_DOUBLE_EQ(fairing.get_height(0), 0.125);
    EXPECT_DOUBLE_EQ(fairing.get_height(3), 0.875);
}

TEST(Fairing, draws_the_same_curve_when_it_is_split)
{
    Fairing crossed(19); // whose handles cross
    crossed.create_empty_cps(2);
    *crossed.inq_control_point(0) = {{0.0, 0.0}, {}, {0.9, 0.0}};
    *crossed.inq_control_point(1) = {{1.0, 1.0}, {-0.9, 0.0}, {}};
    Fairing upright(19); // in the middle
    upright.create_empty_cps(2);
    *upright.inq_control_point(0) = {{0.0, 0.0}, {}, {1.0, 0.2}};
    *upright.inq_control_point(1) = {{1.0, 1.0}, {-1.1, 0.0}, {}};
    Fairing beyond(19); // that reaches its height too early and stays
    beyond.create_empty_cps(2);
    *beyond.inq_control_point(0) = {{0.0, 0.0}, {}, {0.3, 0.9}};
    *beyond.inq_control_point(1) = {{1.0, 1.3}, {-0.3, 0.0}, {}};
    Fairing late(19); // that begins and ends level, with handles there that bend nothing
    late.create_empty_cps(2);
    *late.inq_control_point(0) = {{0.4, 0.1}, {-0.2, 0.3}, {0.1, 0.2}};
    *late.inq_control_point(1) = {{0.8, 0.9}, {-0.1, -0.1}, {0.1, -0.4}};
    for (const Fairing* each : {&crossed, &upright, &beyond, &late})
        for (int cut = 1; cut < 20; ++cut)
            expect_same_curve_after_split(*each, cut);

    std::mt19937 random(3);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    for (int i = 0; i < 200; ++i) { // in three steps that only climb
        Fairing rising(19);
        rising.create_empty_cps(4);
        for (int p = 0; p < 4; ++p)
            rising.inq_control_point(p)->point = {p / 3.0, p / 3.0};
        for (int p = 0; p < 3; ++p) {
            rising.inq_control_point(p)->after = {share(random) / 3, share(random) / 3};
            rising.inq_control_point(p + 1)->before = {-share(random) / 3, -share(random) / 9};
            rising.inq_control_point(p)->after.height /= 3;
        }
        expect_same_curve_after_split(rising, 1 + i % 19);
    }
}
