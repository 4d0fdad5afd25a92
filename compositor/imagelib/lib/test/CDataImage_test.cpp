#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/StandInCNode.h"
#include "imagelib/hdr/MipMap.h"
#include "kivlib/hdr/AbortPanel.h"

#include <gtest/gtest.h>

namespace {

IntBBox make_box(long left, long bottom, long width, long height)
{
    return IntBBox(IntRect(bottom + height, left, bottom, left + width));
}

void ask(CDataImage& data, const IntBBox& box, int quality = 0)
{
    data.set_request_data(1, true, false, quality, Matrix44(), box);
}

/// Whether the datum says that it drew itself into a shared target.
bool is_marked(CDataImage& data)
{
    CDataImage consumer;
    ask(consumer, make_box(0, 0, 1, 1));
    consumer.create_pixmap(PT_RGBA_8);
    data.copy_generated_data_to(&consumer, nullptr);
    return std::unique_ptr<KIVPixmap>(consumer.extract_pixmap()) != nullptr;
}

/// Some images on one input channel, the first of them on top, and what they are merged in.
class Layers : public testing::Test {
protected:
    CDataImage& add(const IntBBox& box)
    {
        ops.push_back(std::make_unique<CNodeOp>(&node));
        auto* image = new CDataImage;
        ops.back()->set_outputs(CDataImage::inq_type_s(), image);
        ask(*image, box);
        return *image;
    }

    CDataImage& add(const IntBBox& box, const Picture& picture)
    {
        CDataImage& image = add(box);
        image.set_generated_data(make_pixmap(picture).release());
        return image;
    }

    Picture merge(const IntBBox& box, AbortPanel* abort = nullptr)
    {
        CNodeOpArray inputs(static_cast<int>(ops.size()), CDataImage::inq_type_s(), false);
        for (std::size_t i = 0; i < ops.size(); ++i)
            inputs.set_nodeop(static_cast<int>(i), ops[i].get());
        ask(merged, box);
        merged.union_generated_data_from(&inputs, abort);
        result.reset(merged.extract_pixmap());
        return find_picture(result.get());
    }

    StandInCNode node{nullptr};
    std::vector<std::unique_ptr<CNodeOp>> ops;
    CDataImage merged;
    std::unique_ptr<KIVPixmap> result;
};

} // namespace

TEST_F(Layers, of_equal_boxes_go_over_the_lowest_which_is_taken_as_it_is)
{
    add(make_box(0, 0, 3, 2), {".G.", "..."});
    KIVPixmap* bottom = add(make_box(0, 0, 3, 2), {"RRR", "R.R"}).create_pixmap(PT_RGBA_8);
    EXPECT_EQ(merge(make_box(0, 0, 3, 2)), (Picture{"RGR", "R.R"}));
    EXPECT_EQ(result.get(), bottom);
}

TEST_F(Layers, of_other_boxes_land_at_their_place)
{
    add(make_box(11, 23, 2, 1), {"BB"});
    add(make_box(12, 21, 1, 2), {"R", "G"});
    add(make_box(14, 20, 1, 1), {"W"});
    EXPECT_EQ(merge(make_box(11, 20, 4, 4)), (Picture{"BB..", ".R..", ".G..", "...W"}));
}

TEST_F(Layers, without_a_box_or_a_picture_add_nothing)
{
    add(IntBBox(), {"RR"});
    add(make_box(0, 0, 2, 1), {".B"});
    add(make_box(0, 0, 2, 1));
    EXPECT_EQ(merge(make_box(0, 0, 2, 1)), Picture{".B"});
    EXPECT_EQ(merge(IntBBox()), Picture{});
}

TEST_F(Layers, that_drew_themselves_elsewhere_leave_a_mark_alone)
{
    add(make_box(0, 0, 2, 1), {"RR"});
    add(make_box(0, 0, 2, 1)).set_did_composite();
    EXPECT_EQ(merge(make_box(0, 0, 2, 1)), Picture{});
    EXPECT_TRUE(is_marked(merged));
}

TEST_F(Layers, below_an_abort_stay_as_they_are)
{
    struct Impatient : AbortPanel {
        bool inq_abort() override { return n_asked++ > 0; }
        int n_asked = 0;
    } abort;
    add(make_box(0, 0, 1, 1), {"R"});
    add(make_box(0, 0, 1, 1), {"B"});
    EXPECT_EQ(merge(make_box(0, 0, 1, 1), &abort), Picture{"B"});
}

TEST(CDataImage, draws_a_private_picture_in_view_space)
{
    MipMap image(make_pixmap({"RG", "BW"}).release());
    const Vector2 corners[] = {{11.0, 8.0}, {13.0, 8.0}, {13.0, 6.0}, {11.0, 6.0}};
    for (const int quality : {0, 1}) {
        CDataImage data;
        ask(data, make_box(10, 5, 4, 3), quality);
        data.set_generated_data(&image, corners, nullptr);
        const std::unique_ptr<KIVPixmap> picture(data.extract_pixmap());
        EXPECT_EQ(find_picture(picture.get()), (Picture{".RG.", ".BW.", "...."})) << quality;
    }
    MipMap missing(nullptr);
    CDataImage data;
    ask(data, make_box(10, 5, 1, 1));
    data.set_generated_data(&missing, corners, nullptr);
    const std::unique_ptr<KIVPixmap> blank(data.extract_pixmap());
    EXPECT_EQ(find_picture(blank.get()), Picture{"."});
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
    ask(data, make_box(0, 0, SIZE, SIZE));
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
