#include "imagelib/hdr/PixOpFilter.h"
#include "imagelib/test/PixmapGrid.h"

#include <gtest/gtest.h>

namespace {
void set_row(KIVPixmap& pixmap, int y, unsigned value)
{
    for (int x = 0; x < pixmap.inq_width(); ++x)
        for (int sample = 0; sample < pixmap.inq_samples_per_pixel(); ++sample)
            set_sample(pixmap, x, y, sample, value);
}
} // namespace

TEST(PixOpAddInterlace, takes_every_other_row_of_the_second_field)
{
    KIVPixmap first(3, 4, PT_RGBA_8, nullptr, false);
    KIVPixmap second(3, 4, PT_RGBA_8, nullptr, false);
    for (int y = 0; y < 4; ++y) {
        set_row(first, y, 10);
        set_row(second, y, 20);
    }
    EXPECT_TRUE(PixOpAddInterlace(&second).transform(&first));
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(inq_sample(first, 1, y, 0), y % 2 == 0 ? 10U : 20U);
    KIVPixmap shorter(3, 3, PT_RGBA_8, nullptr, false);
    EXPECT_FALSE(PixOpAddInterlace(&shorter).transform(&first));
}

TEST(PixOpInterlaceFilter, spreads_a_line_over_the_rows_beside_it)
{
    KIVPixmap pixmap(2, 4, PT_RGB_16, nullptr, false);
    for (int y = 0; y < 4; ++y)
        set_row(pixmap, y, y == 1 ? 60000 : 0);
    EXPECT_TRUE(PixOpInterlaceFilter().transform(&pixmap));
    const unsigned expected[] = {15000, 30000, 15000, 0};
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(inq_sample(pixmap, 1, y, 0), expected[y]);
}
