#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "imagelib/hdr/MipMap.h"

#include <gtest/gtest.h>

TEST(CDataImage, tells_equal_requests_but_not_for_derived_data)
{
    const CDataImage plain;
    const class : public CDataImage {
    } derived;
    EXPECT_TRUE(plain.inq_request_equals(&plain));
    EXPECT_FALSE(derived.inq_request_equals(&derived));
}

// A soft picture has a known value at every point, whatever resamples it.
TEST(CDataImage, keeps_pixel_centres_under_any_affine_map)
{
    constexpr int SIZE = 96;
    MipMap image(make_waves(SIZE, SIZE).release());
    Matrix33 turn;
    turn.set_rotation(0.4, {48.3, 47.9});
    const Vector2 corners[] = {turn * Vector2(5.2, 90.6), turn * Vector2(89.7, 90.6),
                               turn * Vector2(89.7, 3.1), turn * Vector2(5.2, 3.1)};
    CDataImage data;
    data.set_request_data(1, true, false, 0, Matrix44(), IntBBox(IntRect(SIZE, 0, 0, SIZE)));
    KIVPixmap* target = data.create_pixmap(PT_RGBA_8);
    data.composite_generated_data(&image, corners, target);
    const Matrix33 to_image = points_to_unit_square(corners[3], corners[2], corners[0]);
    double square_error = 0.0;
    int n_samples = 0;
    for (int y = 0; y < SIZE; ++y)
        for (int x = 0; x < SIZE; ++x) {
            const Vector2 place = to_image * Vector2(x + 0.5, SIZE - (y + 0.5));
            const double edge = 0.02;
            if (std::min(place.x(), place.y()) < edge || std::max(place.x(), place.y()) > 1 - edge)
                continue;
            for (int sample = 0; sample < 3; ++sample, ++n_samples) {
                const double error =
                    wave(place.x(), 1.0 - place.y(), sample) - target->inq_row(y)[4 * x + sample];
                square_error += error * error;
            }
        }
    ASSERT_GT(n_samples, SIZE * SIZE);
    EXPECT_GT(10.0 * std::log10(255.0 * 255.0 * n_samples / square_error), 50.0);
}
