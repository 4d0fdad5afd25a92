#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/test/Pixels.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/StandInCNode.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/KIVColour.h"

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

/// A tiled image that is red in the parts that it delivers.
class TiledCard : public TiledMipMap {
public:
    TiledCard(int width, int height) { set_size(width, height, 0.0, 0.0); }

    gsl::owner<KIVPixmap*> new_region_pixmap(Vector2* corners, int width, int height) override
    {
        asked.assign(corners, corners + 4);
        asked_size = {width, height};
        std::copy(fetched.begin(), fetched.end(), corners);
        return fetched.empty() ? nullptr : make_pixmap({"RR", "RR"}).release();
    }

    std::vector<Vector2> fetched;
    std::vector<Vector2> asked;
    std::pair<int, int> asked_size;

private:
    gsl::owner<KIVPixmap*> load_picture(KIVString&) override
    {
        return make_pixmap({"BB", "BB"}).release();
    }
};

} // namespace

TEST(CDataImage, makes_one_target_for_all_that_draw)
{
    CDataImage data;
    EXPECT_EQ(data.extract_pixmap(), nullptr);
    ask(data, make_box(-3, 5, 4, 2));
    KIVPixmap* target = data.create_pixmap(PT_RGBA_16);
    EXPECT_EQ(target->inq_type(), PT_RGBA_16);
    EXPECT_EQ(target->inq_width(), 4);
    EXPECT_EQ(target->inq_height(), 2);
    EXPECT_EQ(target->inq_origin(), Vector2(3.0, -5.0));
    EXPECT_EQ(data.create_pixmap(PT_RGBA_8), target);

    const std::unique_ptr<KIVPixmap> taken(data.extract_pixmap());
    EXPECT_EQ(taken.get(), target);
    EXPECT_EQ(taken->inq_origin(), Vector2());
    const KIVPixmap* card = data.create_pixmap(KIVColour(1.0, 0.0, 0.0), PT_RGBA_8);
    EXPECT_EQ(find_picture(card), Picture(2, "RRRR"));
    EXPECT_EQ(card->inq_origin(), Vector2(3.0, -5.0));
}

TEST(CDataImage, keeps_the_mark_of_a_shared_target_until_it_is_reset)
{
    CDataImage data;
    ask(data, make_box(0, 0, 1, 1));
    data.set_generated_data(make_pixmap({"R"}).release());
    data.set_did_composite();
    delete data.extract_pixmap();
    EXPECT_FALSE(is_marked(data)) << "it had pixels of its own";

    data.set_did_composite();
    EXPECT_TRUE(is_marked(data));
    data.clear_generated_data();
    EXPECT_TRUE(is_marked(data));
    data.set_generated_data(nullptr);
    EXPECT_FALSE(is_marked(data));
    data.set_did_composite();
    data.reset_data();
    EXPECT_FALSE(is_marked(data));
    EXPECT_TRUE(data.inq_image_ibbox_v().inq_is_empty());
}

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

TEST(CDataImage, fetches_a_part_of_a_tiled_image_that_is_hardly_seen)
{
    TiledCard image(8, 8);
    image.fetched = {{0.25, 0.75}, {0.75, 0.75}, {0.75, 0.25}, {0.25, 0.25}};
    CDataImage data;
    ask(data, make_box(100, 100, 4, 4));
    KIVPixmap* target = data.create_pixmap(PT_RGBA_8);
    const Vector2 corners[] = {{-2.0, 6.0}, {6.0, 6.0}, {6.0, -2.0}, {-2.0, -2.0}};
    data.composite_generated_data(&image, corners, target);
    EXPECT_EQ(image.asked_size, std::make_pair(8, 8));
    ASSERT_EQ(image.asked.size(), 4U);
    EXPECT_EQ(image.asked[0], Vector2(0.25, 0.75));
    EXPECT_EQ(image.asked[2], Vector2(0.75, 0.25));
    EXPECT_EQ(find_picture(target), Picture(4, "RRRR"));
}

TEST(CDataImage, takes_the_whole_of_a_tiled_image_that_is_mostly_seen_or_gives_no_part)
{
    const Vector2 inside[] = {{0.0, 4.0}, {4.0, 4.0}, {4.0, 0.0}, {0.0, 0.0}};
    const Vector2 around[] = {{-4.0, 8.0}, {8.0, 8.0}, {8.0, -4.0}, {-4.0, -4.0}};
    TiledCard image(2, 2);
    CDataImage data;
    ask(data, make_box(0, 0, 4, 4));
    KIVPixmap* target = data.create_pixmap(PT_RGBA_8);
    data.composite_generated_data(&image, inside, target);
    EXPECT_TRUE(image.asked.empty());
    EXPECT_EQ(find_picture(target)[1].substr(1, 2), "BB");
    data.composite_generated_data(&image, around, target);
    EXPECT_EQ(image.asked.size(), 4U);
    EXPECT_EQ(find_picture(target), Picture(4, "BBBB"));
}
