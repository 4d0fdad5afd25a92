#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "imagelib/src/reduce.h"
#include "imagelib/test/PixmapGrid.h"
#include "tests/support/CacheLimit.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <tiffio.h>

namespace {
/// A picture of odd sides with a value of its own at every place.
void write_large(const TempFolder& folder, const char* name, int width, int height)
{
    std::string pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const int value : {x, y, x / 256 + y / 256, x * y / 8})
                pixels.push_back(static_cast<char>(value));
    std::string deep; // two bytes to a sample, three samples to a pixel
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        deep += pixels.substr(i, 3) + pixels.substr(i + 1, 3);
    folder.write(name,
                 "P6 " + std::to_string(width) + " " + std::to_string(height) + " 65535\n" + deep);
}

/// The full picture and one copy of another size, which hangs on it.
void write_with_sub_page(const KIVString& path)
{
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    for (const int size : {64, 31}) {
        const std::vector<unsigned char> tile(32 * 32, static_cast<unsigned char>(size));
        const std::uint64_t none[1] = {0};
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 0.5); // which nobody means
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, 32);
        if (size == 64)
            TIFFSetField(tiff, TIFFTAG_SUBIFD, 1, none);
        for (int i = 0; i < (size + 31) / 32 * ((size + 31) / 32); ++i)
            TIFFWriteEncodedTile(tiff, static_cast<std::uint32_t>(i),
                                 const_cast<unsigned char*>(tile.data()), 32 * 32);
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
}

/// A file that a provider has locked.
class Locked {
public:
    Locked(const KIVString& file, int bits)
        : provider(bits), id(provider.new_image_id(file)), mip(provider.lock(id))
    {}
    ~Locked() { provider.unlock(id); }

    MipMap* operator->() { return mip; }

private:
    BitmapProvider provider;
    int id;
    MipMap* mip;
};
} // namespace

TEST(TiledMipMap, gives_the_part_of_the_best_copy_that_is_seen)
{
    const TempFolder folder;
    KIVString error;
    write_large(folder, "large.ppm", 1101, 703);
    ASSERT_TRUE(make_tiled_image(folder.path("large.ppm"), folder.path("tiles.tif"), error));
    for (const int bits : {8, 16}) {
        Locked plain(folder.path("large.ppm"), bits);
        Locked tiled(folder.path("tiles.tif"), bits);
        ASSERT_TRUE(tiled->inq_tiled());
        EXPECT_TRUE(tiled->get_frame() == plain->get_frame());
        for (const int width : {2000, 1101, 550, 275, 100}) {
            const int height = width * 703 / 1101;
            const KIVPixmap* whole = plain->inq_pixmap(width, height);
            EXPECT_LE(inq_difference(*tiled->inq_pixmap(width, height), *whole),
                      bits == 8 ? 1U : 0U);
            Vector2 corners[4] = {{0.3, 0.5}, {0.6, 1.4}, {0.5, 0.2}, {0.2, 0.1}};
            const std::unique_ptr<KIVPixmap> part(tiled->new_region_pixmap(corners, width, height));
            ASSERT_TRUE(part);
            EXPECT_LE(corners[3].x(), 0.2);
            EXPECT_LE(corners[3].y(), 0.1);
            EXPECT_GE(corners[1].x(), 0.6);
            EXPECT_EQ(corners[1].y(), 1.0);
            const double scale = whole->inq_width();
            KIVPixmap expected(part->inq_width(), part->inq_height(), 4, bits, nullptr, false);
            expected.copy(whole,
                          IntVector2(static_cast<int>(std::lround(-corners[0].x() * scale)), 0));
            if (width >= 550) {
                EXPECT_LT(part->inq_width(), whole->inq_width());
            }
            EXPECT_LE(inq_difference(*part, expected), bits == 8 ? 1U : 0U) << width;
        }
    }
}

TEST(TiledMipMap, gives_parts_that_are_squeezed_on_the_same_pixels_as_the_whole)
{
    const TempFolder folder;
    KIVString error;
    write_large(folder, "large.ppm", 1536, 703);
    ASSERT_TRUE(make_tiled_image(folder.path("large.ppm"), folder.path("tiles.tif"), error));
    Locked tiled(folder.path("tiles.tif"), 16);
    struct Squeeze {
        int width;
        int height;
        int halved_across; // so many times before it is drawn
        int halved_down;
    };
    for (const Squeeze& shown : {Squeeze{1200, 175, 0, 2}, Squeeze{40, 600, 5, 0}})
        for (const double at : {0.0, 0.31, 0.62, 0.9}) {
            const auto squeeze = [&](const KIVPixmap& pixels) {
                auto made = make_reduced(pixels, false, false);
                for (int i = 0; i < shown.halved_across + shown.halved_down; ++i)
                    made = make_reduced(*made, i < shown.halved_across, i >= shown.halved_across);
                return made;
            };
            const auto whole = squeeze(*tiled->inq_pixmap(shown.width, shown.height));
            Vector2 corners[4] = {{at, at}, {at, at}, {at, at}, {at, at}};
            const std::unique_ptr<KIVPixmap> region(
                tiled->new_region_pixmap(corners, shown.width, shown.height));
            const auto part = squeeze(*region);
            KIVPixmap expected(part->inq_width(), part->inq_height(), PT_RGBA_16, nullptr, false);
            const long left = std::lround(corners[0].x() * whole->inq_width());
            const long top = std::lround((1.0 - corners[0].y()) * whole->inq_height());
            expected.copy(whole.get(), IntVector2(-left, -top));
            EXPECT_EQ(inq_difference(*part, expected), 0U) << shown.width << ' ' << at;
        }
}

TEST(TiledMipMap, keeps_its_tiles_below_the_limit_of_all_pictures)
{
    const TempFolder folder;
    KIVString error;
    write_large(folder, "large.ppm", 1500, 1100);
    ASSERT_TRUE(make_tiled_image(folder.path("large.ppm"), folder.path("tiles.tif"), error));
    const std::size_t before = BitmapProvider::inq_cached_bytes();
    constexpr std::size_t TILE = 256 * 256 * 4;
    const CacheLimit limit(before + 4 * TILE);
    Locked tiled(folder.path("tiles.tif"), 8);
    for (int i = 0; i < 5; ++i) {
        const double left = i * 0.2;
        Vector2 corners[4] = {{left, 0.6}, {left + 0.1, 0.6}, {left + 0.1, 0.5}, {left, 0.5}};
        const std::unique_ptr<KIVPixmap> part(tiled->new_region_pixmap(corners, 1500, 1100));
        ASSERT_TRUE(part);
        EXPECT_LE(BitmapProvider::inq_cached_bytes(), before + 4 * TILE);
        EXPECT_GE(BitmapProvider::inq_cached_bytes(), before + 2 * TILE);
    }
    EXPECT_LE(tiled->inq_pixmap(1500, 1100)->inq_bytes(), before + 4 * TILE);
    Vector2 all[4] = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
    const std::unique_ptr<KIVPixmap> part(tiled->new_region_pixmap(all, 1500, 1100));
    EXPECT_EQ(part->inq_width(), 375); // half the size would pass the limit
}

TEST(TiledMipMap, reads_copies_that_hang_on_the_picture)
{
    const TempFolder folder;
    write_with_sub_page(folder.path("sub.tif"));
    Locked tiled(folder.path("sub.tif"), 8);
    ASSERT_TRUE(tiled->inq_tiled());
    EXPECT_EQ(tiled->get_frame().inq_width(), 64.0);
    EXPECT_EQ(inq_sample(*tiled->inq_pixmap(32, 32), 0, 0, 0), 64U);
    EXPECT_EQ(inq_sample(*tiled->inq_pixmap(31, 31), 30, 30, 0), 31U);
    EXPECT_EQ(inq_sample(*tiled->inq_pixmap(7, 7), 6, 6, 0), 31U);
}

TEST(TiledMipMap, is_unusable_once_a_tile_is_damaged)
{
    const TempFolder folder;
    KIVString error;
    write_large(folder, "large.ppm", 600, 300);
    ASSERT_TRUE(make_tiled_image(folder.path("large.ppm"), folder.path("tiles.tif"), error));
    std::string file = folder.read("tiles.tif");
    file[20] = static_cast<char>(~file[20]); // of the first tile
    folder.write("tiles.tif", file);
    Locked tiled(folder.path("tiles.tif"), 8);
    Vector2 right[4] = {{0.9, 0.1}, {1, 0.1}, {1, 0}, {0.9, 0}};
    EXPECT_TRUE(std::unique_ptr<KIVPixmap>(tiled->new_region_pixmap(right, 600, 300)));
    Vector2 left[4] = {{0, 1}, {0.1, 1}, {0.1, 0.9}, {0, 0.9}};
    EXPECT_FALSE(tiled->new_region_pixmap(left, 600, 300));
    EXPECT_FALSE(tiled->usable);
    EXPECT_TRUE(tiled->inq_error_msg().contains("tiles.tif: "));
}
