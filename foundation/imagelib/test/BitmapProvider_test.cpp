#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixOpFilter.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/KIVStringList.h"
#include "tests/support/CacheLimit.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {
/// A picture file of one grey.
void write_grey(const TempFolder& folder, const std::string& name, int width, int height, int grey)
{
    folder.write(
        name, "P5 " + std::to_string(width) + " " + std::to_string(height) + " 255\n" +
                  std::string(static_cast<std::size_t>(width * height), static_cast<char>(grey)));
}

unsigned inq_grey(MipMap* mip)
{
    const KIVPixmap* pixmap = mip ? mip->inq_pixmap(1, 1) : nullptr;
    return pixmap ? inq_sample(*pixmap, 0, 0, 0) : 999;
}
} // namespace

TEST(MipMap, gives_the_smallest_copy_that_is_large_enough)
{
    MipMap mip(make_soft_patch(101, 60, PT_RGB_8).release());
    ASSERT_TRUE(mip.usable);
    EXPECT_TRUE(mip.get_frame() == KIVRectangle(-50.5, -30.0, 50.5, 30.0));
    EXPECT_EQ(mip.inq_pixmap(200, 200)->inq_width(), 101);
    EXPECT_EQ(mip.inq_pixmap(50, 31)->inq_width(), 101);
    EXPECT_EQ(mip.inq_pixmap(50, 30)->inq_width(), 50);
    EXPECT_EQ(mip.inq_pixmap(25, 4)->inq_height(), 15);
    EXPECT_EQ(mip.inq_pixmap(0, 0)->inq_width(), 1);
    EXPECT_TRUE(mip.inq_pixmap(200, 200)->inq_alpha());
    MipMap none(nullptr);
    EXPECT_FALSE(none.usable);
    EXPECT_EQ(none.inq_pixmap(1, 1), nullptr);
    EXPECT_EQ(TiledMipMap::inq_tiled_extensions().count(), 2);
}

TEST(MipMap, weighs_the_pixels_of_odd_sides_by_their_area)
{
    for (const int bits : {8, 16}) {
        const unsigned unit = bits == 8 ? 1 : 0x101;
        auto* picture = new KIVPixmap(5, 4, 4, bits, nullptr, false);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 5; ++x)
                for (int c = 0; c < 4; ++c)
                    set_sample(
                        *picture, x, y, c,
                        c == 3 ? 255 * unit
                               : (50 * static_cast<unsigned>(x) + 4 * static_cast<unsigned>(y)) *
                                     unit);
        MipMap mip(picture);
        const KIVPixmap* half = mip.inq_pixmap(2, 2);
        // 0, 50 and half of 100, and the rest
        EXPECT_NEAR(inq_sample(*half, 0, 0, 0), (40 + 2) * unit, 1);
        EXPECT_NEAR(inq_sample(*half, 1, 1, 0), (160 + 10) * unit, 1);
        EXPECT_EQ(inq_sample(*half, 1, 1, 3), 255 * unit);
    }
}

TEST(MipMap, lies_in_units_of_its_resolution)
{
    auto picture = make_soft_patch(120, 60, PT_RGBA_8);
    picture->set_dpi(30.0, 2.0);
    const MipMap mip(picture.release());
    EXPECT_TRUE(mip.get_frame() == KIVRectangle(-120.0, -30.0, 120.0, 30.0));
}

TEST(BitmapProvider, gives_one_id_to_a_file_and_reads_it_when_locked)
{
    const TempFolder folder;
    BitmapProvider_8 provider;
    const int id = provider.new_image_id(folder.path("a.pgm"));
    EXPECT_GE(id, 0);
    EXPECT_EQ(provider.new_image_id(folder.path("x/../a.pgm")), id);
    EXPECT_NE(provider.new_image_id(folder.path("b.pgm")), id);

    MipMap* missing = provider.lock(id);
    ASSERT_TRUE(missing);
    EXPECT_FALSE(missing->usable);
    EXPECT_TRUE(missing->inq_error_msg().contains("No such file"));
    provider.unlock(id);

    write_grey(folder, "a.pgm", 20, 10, 77);
    MipMap* mip = provider.lock(id);
    EXPECT_TRUE(mip->usable);
    EXPECT_EQ(mip->width, 20);
    EXPECT_EQ(inq_grey(mip), 77U);
    EXPECT_FALSE(mip->inq_tiled());
    provider.unlock(id);

    EXPECT_EQ(provider.lock(-1), nullptr);
    EXPECT_EQ(provider.lock(1000), nullptr);
    provider.unlock(-1);
    provider.unlock(1000);
}

TEST(BitmapProvider, makes_the_same_copies_while_it_reads_as_afterwards)
{
    const TempFolder folder;
    BitmapProvider_8 provider;
    auto* writers = static_cast<const KIVPixmapWriterDescriptor*>(
        ClassManager::inq_main()->find_cd_for("TiffWriter"));
    for (const int variant : {0, 1})
        for (const int width : {2048, 333}) { // several pieces of a strip, and odd sizes
            const KIVString file =
                folder.path((std::to_string(width) + std::to_string(variant) + ".tif").c_str());
            const std::unique_ptr<KIVPixmapWriter> writer(writers->new_writer(variant));
            ASSERT_TRUE(writer->write_pixmap(file, make_soft_patch(width, 147, PT_RGBA_8).get()));
            MipMap whole(make_soft_patch(width, 147, PT_RGBA_8).release());
            const int id = provider.new_image_id(file);
            MipMap* mip = provider.lock(id);
            for (int size = 1; size <= 147; size = 2 * size + 1) { // the smallest first
                const KIVPixmap* copy = mip->inq_pixmap(size, size);
                ASSERT_TRUE(copy);
                EXPECT_EQ(inq_difference(*copy, *whole.inq_pixmap(size, size)), 0U);
                KIVPixmap drawn(copy->inq_width(), copy->inq_height(), PT_RGBA_8, nullptr, false);
                drawn.clear();
                drawn.composite(copy, IntVector2(0, 0));
                EXPECT_EQ(inq_difference(*copy, drawn), 0U);
            }
            provider.unlock(id);
        }
}

TEST(BitmapProvider, reads_a_changed_file_anew_but_not_under_a_lock)
{
    const TempFolder folder;
    BitmapProvider_16 provider;
    write_grey(folder, "a.pgm", 20, 10, 77);
    const int id = provider.new_image_id(folder.path("a.pgm"));
    MipMap* mip = provider.lock(id);
    EXPECT_EQ(inq_grey(mip), 77U * 0x101);
    write_grey(folder, "a.pgm", 40, 10, 99);
    EXPECT_EQ(provider.lock(id), mip);
    EXPECT_EQ(mip->width, 20);
    provider.unlock(id);
    provider.unlock(id);
    EXPECT_EQ(provider.lock(id)->width, 40);
    EXPECT_EQ(inq_grey(mip), 99U * 0x101);
    provider.unlock(id);
}

TEST(BitmapProvider, keeps_an_id_for_its_holders_and_its_locks)
{
    const TempFolder folder;
    BitmapProvider_8 provider;
    write_grey(folder, "a.pgm", 20, 10, 77);
    const int id = provider.new_image_id(folder.path("a.pgm"));
    provider.hold_object_id(id);
    provider.delete_object_id(id);
    MipMap* mip = provider.lock(id);
    ASSERT_TRUE(mip);
    provider.delete_object_id(id);
    EXPECT_EQ(inq_grey(mip), 77U); // still locked
    EXPECT_NE(provider.new_image_id(folder.path("a.pgm")), id);
    provider.unlock(id);
    EXPECT_EQ(provider.lock(id), nullptr);
    provider.delete_object_id(id);
}

TEST(BitmapProvider, drops_the_pixels_that_were_used_longest_ago)
{
    const TempFolder folder;
    const std::size_t before = BitmapProvider::inq_cached_bytes();
    constexpr std::size_t PICTURE = 64 * 64 * 4;
    const CacheLimit limit(before + 5 * PICTURE / 2);
    BitmapProvider_8 provider;
    int ids[3];
    for (int i = 0; i < 3; ++i) {
        const std::string name = std::to_string(i) + ".pgm";
        write_grey(folder, name, 64, 64, 10 * (i + 1));
        ids[i] = provider.new_image_id(folder.path(name));
    }
    const auto use = [&](int i) {
        MipMap* mip = provider.lock(ids[i]);
        ASSERT_TRUE(mip->inq_pixmap(64, 64));
        provider.unlock(ids[i]);
    };
    use(0);
    use(1);
    use(0);
    EXPECT_EQ(BitmapProvider::inq_cached_bytes(), before + 2 * PICTURE);
    MipMap* locked = provider.lock(ids[1]);
    const KIVPixmap* pixels = locked->inq_pixmap(64, 64);
    use(2); // drops 0, the only one that nobody has locked and that is not new
    EXPECT_EQ(BitmapProvider::inq_cached_bytes(), before + 2 * PICTURE);
    EXPECT_EQ(inq_sample(*pixels, 5, 5, 0), 20U);
    BitmapProvider::set_cache_limit(before);
    EXPECT_EQ(BitmapProvider::inq_cached_bytes(), before + PICTURE);
    provider.unlock(ids[1]);
    EXPECT_EQ(BitmapProvider::inq_cached_bytes(), before);
    EXPECT_EQ(inq_grey(provider.lock(ids[0])), 10U);
    provider.unlock(ids[0]);
}

TEST(BitmapProvider, reads_a_damaged_file_once_until_it_changes)
{
    const TempFolder folder;
    BitmapProvider_8 provider;
    folder.write("a.pgm", "P2 20 10 255\n" + std::string(500, 'x'));
    const int id = provider.new_image_id(folder.path("a.pgm"));
    MipMap* mip = provider.lock(id);
    EXPECT_TRUE(mip->usable);
    EXPECT_EQ(mip->inq_pixmap(5, 5), nullptr);
    provider.unlock(id);
    EXPECT_FALSE(provider.lock(id)->usable);
    EXPECT_EQ(mip->inq_pixmap(5, 5), nullptr);
    EXPECT_TRUE(mip->inq_error_msg().contains("ends too early"));
    provider.unlock(id);
    write_grey(folder, "a.pgm", 20, 10, 77);
    EXPECT_TRUE(provider.lock(id)->usable);
    EXPECT_EQ(inq_grey(mip), 77U);
    provider.unlock(id);
}

TEST(BitmapProvider, tries_again_where_the_process_lacked_something)
{
    const TempFolder folder;
    BitmapProvider_8 provider;
    write_grey(folder, "a.pgm", 20, 10, 77);
    provider.lock(provider.new_image_id("none")); // a sanitizer looks at the types with files
    const int id = provider.new_image_id(folder.path("a.pgm"));
    rlimit files{};
    ::getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_FALSE(provider.lock(id)->usable);
    ::setrlimit(RLIMIT_NOFILE, &files);
    provider.unlock(id);
    EXPECT_EQ(inq_grey(provider.lock(id)), 77U);
    provider.unlock(id);
}

TEST(PixOpConvertType, rounds_16_bits_to_8)
{
    KIVPixmap pixmap(2, 1, PT_RGBA_16, nullptr, false);
    for (int c = 0; c < 4; ++c) {
        set_sample(pixmap, 0, 0, c, 0x80 * 0x101 + 128);
        set_sample(pixmap, 1, 0, c, 0x80 * 0x101 + 129);
    }
    PixOpConvertType op(4, 8, true);
    EXPECT_TRUE(op.transform(&pixmap));
    EXPECT_EQ(inq_sample(pixmap, 0, 0, 3), 0x80U);
    EXPECT_EQ(inq_sample(pixmap, 1, 0, 3), 0x81U);
    EXPECT_FALSE(op.transform(nullptr));
}
