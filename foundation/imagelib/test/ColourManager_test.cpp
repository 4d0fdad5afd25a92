#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/KIVColour.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TestProfile.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace {
/// The colour of a pixel, or of the middle of a picture, from 0 to 1 and without its alpha.
KIVColour inq_pixel(const KIVPixmap& pixmap, int x, int y)
{
    const double alpha = inq_sample(pixmap, x, y, 3);
    const auto part = [&](int c) { return inq_sample(pixmap, x, y, c) / alpha; };
    return {part(0), part(1), part(2)};
}

void expect_near(const KIVColour& colour, const KIVColour& wanted, double tolerance)
{
    EXPECT_NEAR(colour.inq_red(), wanted.inq_red(), tolerance);
    EXPECT_NEAR(colour.inq_green(), wanted.inq_green(), tolerance);
    EXPECT_NEAR(colour.inq_blue(), wanted.inq_blue(), tolerance);
}

KIVColour inq_locked_colour(BitmapProvider& provider, int id, int size)
{
    MipMap* mip = provider.lock(id);
    const KIVPixmap* pixmap = mip->inq_pixmap(size, size);
    const KIVColour colour = pixmap ? inq_pixel(*pixmap, 0, 0) : KIVColour();
    provider.unlock(id);
    return colour;
}
} // namespace

TEST(ColourManager, takes_profiles_of_colours_only_and_keeps_the_old_one)
{
    const TempFolder folder;
    const std::string good = as_text(take_data(make_swapping_profile()));
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    folder.write("good.icc", good);
    folder.write("grey.icc", as_text(take_data(cmsCreateGrayProfile(cmsD50_xyY(), curve))));
    folder.write("lab.icc", as_text(take_data(cmsCreateLab4Profile(nullptr))));
    folder.write("link.icc",
                 as_text(take_data(cmsCreateLinearizationDeviceLink(cmsSigRgbData, curves))));
    cmsFreeToneCurve(curve);
    folder.write("short.icc", good.substr(0, good.size() / 2));
    folder.write("other.icc", "This is a text and no profile at all.");
    folder.write("empty.icc", "");
    folder.write("huge.icc", good);
    std::filesystem::resize_file(folder.path("huge.icc").str(), LARGEST_PROFILE + 1);

    std::filesystem::create_directory(folder.path("folder").str());

    ColourManager manager;
    EXPECT_EQ(manager.inq_output_revision(), 0);
    manager.set_output_profile_path(folder.path("good.icc"));
    EXPECT_FALSE(manager.inq_has_error()) << manager.inq_error_msg().c_str();
    EXPECT_EQ(as_text(manager.inq_output_profile_data()), good);
    const int revision = manager.inq_output_revision();
    for (const char* name : {"grey.icc", "lab.icc", "link.icc", "short.icc", "other.icc",
                             "empty.icc", "huge.icc", "none.icc", "folder"}) {
        const KIVString path = folder.path(name);
        manager.set_output_profile_path(path);
        EXPECT_TRUE(manager.inq_error_msg().contains(path + ": ")) << name;
        EXPECT_TRUE(manager.inq_output_profile_path() == folder.path("good.icc"));
        EXPECT_EQ(manager.inq_output_revision(), revision);
    }
    manager.set_output_profile_path("");
    EXPECT_FALSE(manager.inq_has_error());
    EXPECT_TRUE(manager.inq_output_profile_data().empty());
}

TEST(ColourManager, gives_the_way_to_the_output_profile_that_is_in_force)
{
    const TempFolder folder;
    folder.write("screen.icc", as_text(take_data(cmsCreate_sRGBProfile())));
    folder.write("swap.icc", as_text(take_data(make_swapping_profile())));
    const KIVColour orange(1.0, 0.4, 0.1, 0.3);
    ColourManager manager;
    const int id = manager.new_transform_id(folder.path("screen.icc"));
    EXPECT_EQ(manager.new_transform_id(folder.path("./screen.icc")), id);
    EXPECT_EQ(manager.lock(id), nullptr); // there is no output profile
    EXPECT_TRUE(manager.inq_has_error());
    manager.unlock(id);

    manager.set_output_profile_path(folder.path("swap.icc"));
    ColourTransform* swap = manager.lock(id);
    ASSERT_TRUE(swap);
    KIVColour colour = orange;
    swap->transform(colour);
    expect_near(colour, KIVColour(0.4, 1.0, 0.1), 0.001);
    EXPECT_EQ(colour.inq_alpha(), 0.3);

    manager.set_output_profile_path(folder.path("screen.icc"));
    EXPECT_EQ(manager.lock(id), swap); // it stays while it is locked
    manager.unlock(id);
    manager.delete_object_id(id);
    manager.delete_object_id(id);
    swap->transform(colour);
    expect_near(colour, orange, 0.002);
    manager.unlock(id);
    EXPECT_EQ(manager.lock(id), nullptr);

    const int same = manager.new_transform_id(folder.path("screen.icc"));
    colour = orange;
    manager.lock(same)->transform(colour);
    EXPECT_EQ(colour, orange);
    manager.unlock(same);
    const int missing = manager.new_transform_id(folder.path("none.icc"));
    EXPECT_EQ(manager.lock(missing), nullptr);
    EXPECT_TRUE(manager.inq_error_msg().contains("none.icc"));
    manager.unlock(missing);
}

TEST(ColourManager, brings_soft_edges_where_it_brings_their_colours)
{
    const TempFolder folder;
    cmsHPROFILE swap = make_swapping_profile();
    folder.write("table.icc", as_text(take_data(make_table_profile(swap))));
    folder.write("matrix.icc", as_text(take_data(swap)));
    folder.write("screen.icc", as_text(take_data(cmsCreate_sRGBProfile())));
    // the colour library goes through a table in coarser steps where it has many pixels
    for (const auto& [name, tolerance] : {std::pair{"matrix.icc", 0.002}, {"table.icc", 0.03}}) {
        ColourManager manager;
        manager.set_output_profile_path(folder.path(name));
        const int id = manager.new_transform_id(folder.path("screen.icc"));
        const ColourTransform* exact = manager.lock(id);
        ASSERT_TRUE(exact) << manager.inq_error_msg().c_str();
        for (const PixType type : {PT_RGBA_8, PT_RGBA_16}) {
            const auto before = make_soft_patch(300, 4, type);
            KIVPixmap after(300, 4, type, nullptr, false);
            after.copy(before.get(), IntVector2(0, 0));
            ASSERT_TRUE(manager.bring_to_output(after, {}));
            for (int x = 0; x < 300; ++x) {
                const unsigned alpha = inq_sample(*before, x, 2, 3);
                ASSERT_EQ(inq_sample(after, x, 2, 3), alpha);
                if (alpha == 0)
                    continue;
                KIVColour wanted = inq_pixel(*before, x, 2);
                exact->transform(wanted);
                expect_near(inq_pixel(after, x, 2), wanted, tolerance + 0.6 / alpha);
            }
        }
        manager.unlock(id);
    }
}

TEST(CMSBitmapProvider, brings_pictures_to_the_output_profile_once)
{
    const TempFolder folder;
    folder.write("swap.icc", as_text(take_data(make_swapping_profile())));
    std::string pixels;
    for (int i = 0; i < 64 * 64; ++i)
        pixels += std::string("\xFF\x80\0", 3);
    folder.write("orange.ppm", "P6 64 64 255\n" + pixels);
    const KIVColour orange(1.0, 128 / 255.0, 0.0);
    const KIVColour swapped(128 / 255.0, 1.0, 0.0);
    for (BitmapProvider* provider : {static_cast<BitmapProvider*>(inq_bitmap_provider_8()),
                                     static_cast<BitmapProvider*>(inq_bitmap_provider_16())}) {
        const int id = provider->new_image_id(folder.path("orange.ppm"));
        expect_near(inq_locked_colour(*provider, id, 64), orange, 0.0);
        CMSBitmapProvider::install();
        expect_near(inq_locked_colour(*provider, id, 64), orange, 0.0);
        {
            const OutputProfile output(folder.path("swap.icc").str());
            for (const int size : {1, 64, 8})
                expect_near(inq_locked_colour(*provider, id, size), swapped, 0.002);
            EXPECT_EQ(provider->new_image_id(folder.path("orange.ppm")), id);
            provider->delete_object_id(id);
        }
        expect_near(inq_locked_colour(*provider, id, 8), orange, 0.0);
        provider->delete_object_id(id);
    }
}

TEST(ColourManager, brings_a_glow_as_the_most_that_a_colour_can_be)
{
    const TempFolder folder;
    folder.write("swap.icc", as_text(take_data(make_swapping_profile())));
    ColourManager manager;
    manager.set_output_profile_path(folder.path("swap.icc"));
    KIVPixmap glow(16, 1, PT_RGBA_16, nullptr, false);
    const std::uint16_t pixel[] = {65535, 40000, 0, 1};
    for (int x = 0; x < 16; ++x)
        std::memcpy(glow.inq_row(0) + 8 * x, pixel, sizeof pixel);
    ASSERT_TRUE(manager.bring_to_output(glow, {}));
    for (const auto& [sample, value] : {std::pair{0, 1U}, {1, 1U}, {2, 0U}, {3, 1U}})
        EXPECT_EQ(inq_sample(glow, 9, 0, sample), value) << sample;
}

TEST(ColourManager, raises_straight_colours_to_the_gamma)
{
    ColourManager manager;
    for (const int bits : {8, 16}) {
        const double most = bits == 8 ? 255.0 : 65535.0;
        KIVPixmap half(2, 1, 4, bits, nullptr, false);
        half.set_colour(KIVColour(0.5, 1.0, 0.0, 0.5));
        KIVPixmap same(2, 1, 4, bits, nullptr, false);
        same.copy(&half, IntVector2(0, 0));
        manager.set_output_gamma(1.0);
        manager.add_gamma(&same);
        EXPECT_EQ(inq_difference(half, same), 0U);
        manager.set_output_gamma(1.0 / 2.2);
        manager.add_gamma(&half);
        EXPECT_NEAR(inq_sample(half, 1, 0, 0) / most, 0.5 * std::pow(0.5, 1.0 / 2.2), 0.005);
        EXPECT_NEAR(inq_sample(half, 1, 0, 1) / most, 0.5, 0.003);
        EXPECT_EQ(inq_sample(half, 1, 0, 2), 0U);
        EXPECT_NEAR(inq_sample(half, 1, 0, 3) / most, 0.5, 0.003);
        manager.set_output_gamma(2.2);
        manager.add_gamma(&half);
        EXPECT_NEAR(inq_sample(half, 1, 0, 0) / most, 0.25, 0.01);
    }
}
