#include "curveslib/hdr/Fairing.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
/// Slow at first and fast in the end.
void ease_in(Fairing& fairing)
{
    fairing.create_empty_cps(2);
    fairing.inq_control_point(0)->after = {0.6, 0.0};
    fairing.inq_control_point(1)->point = {1.0, 1.0};
    fairing.inq_control_point(1)->before = {-0.2, -0.5};
}

class HalfFrame {
public:
    HalfFrame() { Fairing::set_half_frame(true); }
    HalfFrame(const HalfFrame&) = delete;
    HalfFrame& operator=(const HalfFrame&) = delete;
    ~HalfFrame() { Fairing::set_half_frame(false); }
};
} // namespace

TEST(Fairing, is_a_straight_ramp_at_first)
{
    Fairing fairing(3);
    for (int i = 0; i <= 4; ++i)
        EXPECT_DOUBLE_EQ(fairing.get_height(i), i / 4.0);
    fairing.set_number_between(1);
    EXPECT_DOUBLE_EQ(fairing.get_height(1), 0.5);
}

TEST(Fairing, gives_the_frames_of_a_step_one_height)
{
    Fairing fairing(5);
    fairing.set_sample_rate(2);
    EXPECT_EQ(fairing.get_height(1), 0.0);
    EXPECT_EQ(fairing.get_height(3), fairing.get_height(2));
    fairing.set_sample_rate(0); // means every frame
    EXPECT_DOUBLE_EQ(fairing.get_height(3), 0.5);
}

TEST(Fairing, reads_half_a_frame_late_for_a_second_field)
{
    const Fairing fairing(3);
    const HalfFrame on;
    EXPECT_DOUBLE_EQ(fairing.get_height(0), 0.125);
    EXPECT_DOUBLE_EQ(fairing.get_height(3), 0.875);
}

TEST(Fairing, stays_in_range_without_frames_to_ease)
{
    for (const int frames : {0, -1, std::numeric_limits<int>::min()}) {
        const Fairing fairing(frames);
        for (const int offset : {-1, 0, 1, 5}) {
            EXPECT_GE(fairing.get_height(offset), 0.0);
            EXPECT_LE(fairing.get_height(offset), 1.0);
        }
    }
}

TEST(Fairing, follows_its_control_points)
{
    Fairing fairing(9);
    ease_in(fairing);
    EXPECT_EQ(fairing.get_height(0), 0.0);
    EXPECT_LT(fairing.get_height(3), 0.1);
    EXPECT_NEAR(fairing.get_height(10), 1.0, 1e-12);
    for (int i = 1; i <= 10; ++i)
        EXPECT_GT(fairing.get_height(i), fairing.get_height(i - 1));

    fairing.create_empty_cps(3); // through (0.5, 0.2) in straight lines
    fairing.inq_control_point(1)->point = {0.5, 0.2};
    fairing.inq_control_point(2)->point = {1.0, 1.0};
    EXPECT_NEAR(fairing.get_height(5), 0.2, 1e-9);
    EXPECT_NEAR(fairing.get_height(7), 0.52, 0.03);
    EXPECT_EQ(fairing.inq_control_point(3), nullptr);
    EXPECT_EQ(fairing.inq_control_point(-1), nullptr);
}

TEST(Fairing, keeps_all_heights_when_it_is_split_although_its_handles_cross)
{
    constexpr int BETWEEN = 9, CUT = 6;
    Fairing whole(BETWEEN);
    whole.create_empty_cps(2);
    *whole.inq_control_point(0) = {{0.0, 0.0}, {}, {0.9, 0.0}};
    *whole.inq_control_point(1) = {{1.0, 1.0}, {-0.9, 0.0}, {}};
    std::vector<double> heights;
    for (int i = 0; i <= BETWEEN + 1; ++i)
        heights.push_back(whole.get_height(i));

    const std::unique_ptr<Fairing> later(whole.split(CUT));
    EXPECT_EQ(whole.number_between, CUT - 1);
    EXPECT_EQ(later->number_between, BETWEEN - CUT);
    const double cut = heights[CUT];
    for (int i = 0; i <= CUT; ++i)
        EXPECT_NEAR(whole.get_height(i) * cut, heights[static_cast<std::size_t>(i)], 1e-9) << i;
    for (int i = CUT; i <= BETWEEN + 1; ++i)
        EXPECT_NEAR(cut + later->get_height(i - CUT) * (1 - cut),
                    heights[static_cast<std::size_t>(i)], 1e-9)
            << i;
}

TEST(Fairing, copies_and_compares_its_shape_but_not_its_length)
{
    Fairing from(5);
    ease_in(from);
    from.set_sample_rate(3);
    Fairing to(8);
    EXPECT_FALSE(from.is_same_shape(&to));
    from.copy_into(&to);
    EXPECT_TRUE(from.is_same_shape(&to));
    EXPECT_EQ(to.number_between, 8);
    EXPECT_EQ(to.inq_sample_rate(), 3);
}

TEST(Fairing, comes_back_from_a_stream)
{
    Fairing fairing(5);
    ease_in(fairing);
    fairing.set_sample_rate(2);
    const auto back = stored_and_read(fairing);
    ASSERT_TRUE(back);
    EXPECT_TRUE(back->is_same_shape(&fairing));
    EXPECT_EQ(back->number_between, 5);
    EXPECT_EQ(back->inq_sample_rate(), 2);

    OldRecord damaged("Fairing", 1);
    damaged << 5 << 1 << 1000000;
    EXPECT_EQ(damaged.read<Fairing>(), nullptr);
}
