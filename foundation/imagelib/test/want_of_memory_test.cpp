#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/FileHandle.h"
#include "tests/support/Shortage.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {
std::unique_ptr<KIVPixmapWriter> make_writer(const char* name, int variant)
{
    auto* record = ClassManager::inq_main()->find_cd_for(name);
    return std::unique_ptr<KIVPixmapWriter>(
        static_cast<KIVPixmapWriterDescriptor*>(record)->new_writer(variant));
}

std::unique_ptr<KIVPixmap> read_part(MipMap& mip)
{
    Vector2 corners[4] = {{0.1, 0.4}, {0.4, 0.4}, {0.4, 0.1}, {0.1, 0.1}};
    return std::unique_ptr<KIVPixmap>(mip.new_region_pixmap(corners, 300, 200));
}

/// Reads a part, which only tiled pictures have, and a small copy, with one allocation failing.
bool read_after(long before, const KIVString& file, MipMap& right)
{
    BitmapProvider_8 provider;
    const int id = provider.new_image_id(file);
    std::unique_ptr<KIVPixmap> part;
    const KIVPixmap* copy = nullptr;
    const bool has_lacked = lacks_memory_after(before, [&] {
        MipMap* mip = provider.lock(id);
        part = read_part(*mip);
        copy = mip->inq_pixmap(40, 30);
    });
    EXPECT_TRUE(!part || inq_difference(*part, *read_part(right)) == 0);
    const bool is_lost = copy == nullptr;
    EXPECT_TRUE(!copy || inq_difference(
                             *copy, *right.inq_pixmap(copy->inq_width(), copy->inq_height())) == 0);
    provider.unlock(id);
    copy = provider.lock(id)->inq_pixmap(40, 30);
    EXPECT_TRUE(copy && inq_difference(*copy, *right.inq_pixmap(40, 30)) == 0);
    EXPECT_EQ(!provider.inq_loss(id).is_null(), is_lost);
    provider.forget_loss(id);
    EXPECT_TRUE(provider.inq_loss(id).is_null());
    provider.unlock(id);
    return has_lacked;
}

/// Without memory for the quickest way to pack them they are packed otherwise.
bool have_same_pixels(const KIVString& a, const KIVString& b)
{
    KIVString error;
    const std::unique_ptr<KIVPixmap> first(new_pixmap_from_file(a, 8, error));
    const std::unique_ptr<KIVPixmap> second(new_pixmap_from_file(b, 8, error));
    return first && second && inq_difference(*first, *second) == 0;
}

/// Writes the pixmap, or a copy of such a file, with one allocation failing.
bool write_after(long before, KIVPixmapWriter& writer, KIVPixmap& pixmap, bool is_copy)
{
    const TempFolder folder;
    const KIVString right = writer.inq_path(folder.path("right"));
    EXPECT_TRUE(writer.write_pixmap(right, &pixmap));
    const FileHandle original = FileHandle::open_to_read(right.c_str());
    const KIVString file = writer.inq_path(folder.path("file"));
    bool is_written = false;
    const bool has_lacked = lacks_memory_after(before, [&] {
        is_written =
            is_copy ? writer.write_copy(original, file) : writer.write_pixmap(file, &pixmap);
    });
    const std::string name = file.get_file().str();
    EXPECT_EQ(is_written, folder.has(name));
    if (is_written)
        EXPECT_TRUE(folder.read(name) == folder.read(right.get_file().str()) ||
                    have_same_pixels(file, right));
    else
        EXPECT_EQ(writer.inq_error(), KIVPixmapWriter::WRITE_NO_MEMORY);
    return has_lacked;
}
} // namespace

TEST(WantOfMemory, leaves_a_picture_as_it_is_or_lost_until_the_next_lock)
{
    const TempFolder folder;
    const auto patch = make_soft_patch(131, 90, PT_RGBA_8);
    KIVString error;
    ASSERT_TRUE(make_writer("PngWriter", 0)->write_pixmap(folder.path("a.png"), patch.get()));
    ASSERT_TRUE(make_writer("TiffWriter", 1)->write_pixmap(folder.path("b.tif"), patch.get()));
    ASSERT_TRUE(make_writer("TiffWriter", 0)->write_pixmap(folder.path("c.tif"), patch.get()));
    const auto large = make_soft_patch(700, 500, PT_RGBA_8);
    ASSERT_TRUE(make_writer("TiffWriter", 0)->write_pixmap(folder.path("d.tif"), large.get()));
    ASSERT_TRUE(make_tiled_image(folder.path("d.tif"), folder.path("tiled.tif"), error));
    for (const char* name : {"a.png", "b.tif", "c.tif", "tiled.tif"}) {
        SCOPED_TRACE(name);
        BitmapProvider_8 provider;
        MipMap* right = provider.lock(provider.new_image_id(folder.path(name)));
        EXPECT_EQ(read_part(*right) != nullptr, name == std::string("tiled.tif"));
        long before = 0;
        while (read_after(before, folder.path(name), *right))
            ++before;
        EXPECT_GT(before, 10);
    }
}

TEST(WantOfMemory, leaves_no_file_or_a_right_one)
{
    const auto patch = make_soft_patch(96, 70, PT_RGBA_8);
    for (const auto& [name, variant] : {std::pair("TiffWriter", 0),
                                        {"TiffWriter", 1},
                                        {"TargaWriter", 0},
                                        {"PngWriter", 0},
                                        {"PictWriter", 0},
                                        {"CinesiteWriter", 0},
                                        {"YUVWriter", 0},
                                        {"YIQWriter", 0}})
        for (const bool is_copy : {false, true}) {
            SCOPED_TRACE(name);
            const auto writer = make_writer(name, variant);
            long before = 0;
            while (write_after(before, *writer, *patch, is_copy))
                ++before;
            EXPECT_GT(before, 1);
        }
}
