#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/PCharArray.h"
#include "tests/support/TempFolder.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
// after <cstdio>, which it needs
#include <jpeglib.h>
#include <png.h>
#include <sys/resource.h>
#include <tiffio.h>
#include <zlib.h>

namespace {
using Rows = std::vector<std::vector<unsigned>>;
using Pixmap = std::unique_ptr<KIVPixmap>;

std::unique_ptr<KIVPixmapWriter> make_writer(const char* name, int variant)
{
    auto* record = ClassManager::inq_main()->find_cd_for(name);
    return std::unique_ptr<KIVPixmapWriter>(
        record ? static_cast<KIVPixmapWriterDescriptor*>(record)->new_writer(variant) : nullptr);
}

/// Null on an error, which says what the user is told.
Pixmap read(const KIVString& file, int bits, KIVString* told = nullptr)
{
    KIVString error;
    Pixmap pixmap(new_pixmap_from_file(file, bits, error));
    EXPECT_EQ(pixmap == nullptr, !error.is_null());
    if (told)
        *told = error;
    return pixmap;
}

std::string bytes(std::initializer_list<int> values)
{
    std::string text;
    for (const int value : values)
        text.push_back(static_cast<char>(value));
    return text;
}

/// Two pixels by one of straight red at half alpha and opaque green, or of their like.
const unsigned char STRAIGHT_PIXELS[] = {255, 0, 0, 128, 0, 255, 0, 255};

void write_png(const KIVString& path, int width, int height, bool has_alpha,
               const unsigned char* pixels)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = has_alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    ASSERT_TRUE(png_image_write_to_file(&image, path.c_str(), 0, pixels, 0, nullptr));
}

void write_tiff(const KIVString& path, int extra, bool is_tiled)
{
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    ASSERT_TRUE(tiff);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 2);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 100.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 50.0);
    const auto kind = static_cast<std::uint16_t>(extra);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    unsigned char block[16 * 16 * 4] = {};
    std::memcpy(block, STRAIGHT_PIXELS, sizeof(STRAIGHT_PIXELS));
    if (is_tiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
        TIFFWriteEncodedTile(tiff, 0, block, sizeof(block));
    } else {
        TIFFWriteEncodedStrip(tiff, 0, block, sizeof(STRAIGHT_PIXELS));
    }
    TIFFClose(tiff);
}

void write_jpeg(const KIVString& path, int width, int height, const unsigned char* pixels)
{
    jpeg_compress_struct state = {};
    jpeg_error_mgr errors;
    state.err = jpeg_std_error(&errors);
    jpeg_create_compress(&state);
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_TRUE(file);
    jpeg_stdio_dest(&state, file);
    state.image_width = static_cast<JDIMENSION>(width);
    state.image_height = static_cast<JDIMENSION>(height);
    state.input_components = 3;
    state.in_color_space = JCS_RGB;
    jpeg_set_defaults(&state);
    jpeg_set_quality(&state, 100, TRUE);
    state.density_unit = 1;
    state.X_density = 144;
    state.Y_density = 72;
    jpeg_start_compress(&state, TRUE);
    while (state.next_scanline < state.image_height) {
        auto* row = const_cast<unsigned char*>(pixels + state.next_scanline * 3 *
                                                            static_cast<unsigned>(width));
        jpeg_write_scanlines(&state, &row, 1);
    }
    jpeg_finish_compress(&state);
    jpeg_destroy_compress(&state);
    std::fclose(file);
}

/// Three by two on a screen of four by three, at (1, 1); colour 1 is transparent.
std::string make_gif()
{
    return "GIF89a" + bytes({4, 0, 3, 0, 0x81, 0, 0}) +
           bytes({10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120}) +
           bytes({0x21, 0xF9, 4, 1, 0, 0, 1, 0}) + bytes({0x2C, 1, 0, 1, 0, 3, 0, 2, 0, 0}) +
           // codes of 3 bits: clear 0 1 clear 2 3 clear 0 0 end
           bytes({2, 4, 0x44, 0xA8, 0x11, 0x28, 0, 0x3B});
}

std::string make_targa(int type, int depth, int descriptor, const std::string& pixels, int width,
                       int height)
{
    return bytes({0, 0, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, width, 0, height, 0, depth, descriptor}) +
           pixels;
}
} // namespace

TEST(Alpha, is_straight_in_png)
{
    const TempFolder folder;
    write_png(folder.path("a.tga"), 2, 1, true, STRAIGHT_PIXELS); // the name doesn't matter
    for (const int bits : {8, 16}) {
        const Pixmap pixmap = read(folder.path("a.tga"), bits);
        ASSERT_TRUE(pixmap);
        const unsigned unit = bits == 8 ? 1 : 0x101;
        EXPECT_EQ(inq_plane(*pixmap, 0), (Rows{{128 * unit, 0}}));
        EXPECT_EQ(inq_plane(*pixmap, 1), (Rows{{0, 255 * unit}}));
        EXPECT_EQ(inq_plane(*pixmap, 3), (Rows{{128 * unit, 255 * unit}}));
    }
}

TEST(Alpha, follows_the_extra_samples_of_tiff)
{
    const TempFolder folder;
    for (const bool is_tiled : {false, true}) {
        write_tiff(folder.path("straight.tif"), EXTRASAMPLE_UNASSALPHA, is_tiled);
        write_tiff(folder.path("associated.tif"), EXTRASAMPLE_ASSOCALPHA, is_tiled);
        EXPECT_EQ(inq_plane(*read(folder.path("straight.tif"), 8), 0), (Rows{{128, 0}}));
        EXPECT_EQ(inq_plane(*read(folder.path("associated.tif"), 8), 0), (Rows{{255, 0}}));
    }
}

TEST(Alpha, is_straight_in_targa_where_the_head_gives_it_bits)
{
    const TempFolder folder;
    const std::string pixels = bytes({0, 0, 255, 128, 0, 255, 0, 255});
    folder.write("with.tga", make_targa(2, 32, 0x28, pixels, 2, 1));
    folder.write("without.tga", make_targa(2, 32, 0x20, pixels, 2, 1));
    EXPECT_EQ(inq_plane(*read(folder.path("with.tga"), 8), 0), (Rows{{128, 0}}));
    EXPECT_EQ(inq_plane(*read(folder.path("without.tga"), 8), 0), (Rows{{255, 0}}));
    EXPECT_EQ(inq_plane(*read(folder.path("without.tga"), 8), 3), (Rows{{255, 255}}));
}

TEST(Alpha, keeps_a_soft_edge_through_every_writer)
{
    struct Case {
        const char* writer;
        int variant;
        PixType type;
        const char* extension;
        unsigned tolerance; // straight colours at low alpha lose a little
    };
    const Case cases[] = {
        {"TiffWriter", 1, PT_RGBA_8, ".tif", 0},  {"TiffWriter", 0, PT_RGBA_8, ".tif", 0},
        {"TiffWriter", 1, PT_RGBA_16, ".tif", 0}, {"TiffWriter", 0, PT_RGB_16, ".tif", 0},
        {"TiffWriter", 1, PT_RGB_8, ".tif", 0},   {"TargaWriter", 0, PT_RGBA_8, ".tga", 1},
        {"TargaWriter", 0, PT_RGB_8, ".tga", 0},  {"PngWriter", 0, PT_RGBA_8, ".png", 1},
        {"PngWriter", 0, PT_RGB_16, ".png", 0},   {"PngWriter", 0, PT_RGBA_16, ".png", 1}};
    for (const Case& c : cases) {
        const TempFolder folder;
        const auto patch = make_soft_patch(96, 130, c.type); // more rows than a strip has
        patch->set_dpi(120.0, 1.5);
        const auto writer = make_writer(c.writer, c.variant);
        ASSERT_TRUE(writer);
        EXPECT_TRUE(writer->write_pixmap(folder.path("0001"), patch.get()));
        const std::string name = std::string("0001") + c.extension;
        ASSERT_TRUE(folder.has(name));
        const Pixmap back = read(folder.path(name), patch->inq_bits_per_sample());
        ASSERT_TRUE(back);
        const bool has_resolution = c.writer != std::string("TargaWriter");
        EXPECT_NEAR(back->inq_x_dpi(), has_resolution ? 120.0 : 0.0, 0.02);
        EXPECT_NEAR(back->inq_y_dpi(), has_resolution ? 180.0 : 0.0, 0.02);
        ASSERT_TRUE(back->convert(patch->inq_samples_per_pixel(), patch->inq_bits_per_sample()));
        EXPECT_LE(inq_difference(*back, *patch), c.tolerance) << c.writer << c.type;
    }
}

TEST(PixmapReader, reads_gif_at_its_place_on_the_screen)
{
    const TempFolder folder;
    folder.write("a.gif", make_gif());
    KIVString told;
    const Pixmap pixmap = read(folder.path("a.gif"), 8, &told);
    ASSERT_TRUE(pixmap) << told.str();
    EXPECT_EQ(inq_plane(*pixmap, 0), (Rows{{0, 0, 0, 0}, {0, 10, 0, 70}, {0, 100, 10, 10}}));
    EXPECT_EQ(inq_plane(*pixmap, 3), (Rows{{0, 0, 0, 0}, {0, 255, 0, 255}, {0, 255, 255, 255}}));
}

TEST(PixmapReader, reads_jpeg_with_its_resolution)
{
    const TempFolder folder;
    const std::vector<unsigned char> grey(16 * 8 * 3, 100);
    write_jpeg(folder.path("a.jpg"), 16, 8, grey.data());
    const Pixmap pixmap = read(folder.path("a.jpg"), 16);
    ASSERT_TRUE(pixmap);
    EXPECT_EQ(inq_sample(*pixmap, 7, 7, 1), 100U * 0x101);
    EXPECT_EQ(pixmap->inq_x_dpi(), 144.0);
    EXPECT_EQ(pixmap->inq_y_dpi(), 72.0);
}

TEST(PixmapReader, turns_pictures_as_their_exif_data_say)
{
    const TempFolder folder;
    std::vector<unsigned char> left_black(16 * 8 * 3, 0);
    for (std::size_t i = 0; i < left_black.size(); ++i)
        left_black[i] = i / 3 % 16 < 8 ? 0 : 200;
    write_jpeg(folder.path("a.jpg"), 16, 8, left_black.data());
    const std::string exif =
        "MM" + bytes({0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0, 0, 0, 0, 0});
    const std::string jpeg = folder.read("a.jpg");
    folder.write("a.jpg", jpeg.substr(0, 2) + bytes({0xFF, 0xE1, 0, 34}) + "Exif" + bytes({0, 0}) +
                              exif + jpeg.substr(2));
    const Pixmap pixmap = read(folder.path("a.jpg"), 8);
    ASSERT_TRUE(pixmap);
    EXPECT_EQ(pixmap->inq_height(), 16); // the left side has become the top
    EXPECT_NEAR(inq_sample(*pixmap, 7, 2, 0), 0, 2);
    EXPECT_NEAR(inq_sample(*pixmap, 0, 13, 0), 200, 2);
    EXPECT_EQ(pixmap->inq_x_dpi(), 72.0);
}

/// What other software writes is read as that software reads it.
TEST(PixmapReader, agrees_with_other_software)
{
    const TempFolder folder;
    const auto run = [&](const std::string& command) {
        return std::system(
            ("cd " + folder.path("").str() + " && MAGICK_THREAD_LIMIT=1 convert " + command)
                .c_str());
    };
    ASSERT_EQ(run("-size 90x70 plasma:red-blue -depth 16 source.ppm"), 0);
    const char* const variants[] = {
        "-compress zip -interlace plane a.tif",
        "-interlace plane -depth 8 a.tif",
        "-define tiff:tile-geometry=32x48 a.tif",
        "-endian MSB -compress rle a.tif",
        "-endian MSB -compress zip -define tiff:predictor=2 a.tif",
        "-endian LSB -compress none a.tif",
        "-compress zip -define tiff:fill-order=lsb -depth 8 a.tif",
        "-compress zip -define tiff:predictor=2 -colorspace gray a.tif",
        "-colorspace gray -depth 8 -define quantum:polarity=min-is-white a.tif",
        "-depth 8 -colors 100 -depth 8 -type palette a.tif",
        "-type bilevel -compress group4 a.tif",
        "-orient top-right a.tif",
        "-orient bottom-right a.tif",
        "-orient left-top a.tif",
        "-orient right-bottom a.tif",
        "-orient left-bottom a.tif",
        "-interlace plane a.png",
        "-colors 12 -depth 4 a.png",
        "-depth 16 -colorspace gray a.png",
        "-type bilevel a.png",
        "-interlace gif a.gif",
        "-depth 8 -compress rle a.tga",
    };
    for (const std::string variant : variants) {
        const std::string file = variant.substr(variant.rfind(' ') + 1);
        ASSERT_EQ(run("source.ppm " + variant), 0);
        ASSERT_EQ(run(file + " -auto-orient -depth 16 expected.ppm"), 0);
        const Pixmap pixmap = read(folder.path(file), 16);
        ASSERT_TRUE(pixmap) << variant;
        EXPECT_EQ(inq_difference(*pixmap, *read(folder.path("expected.ppm"), 16)), 0U) << variant;
    }
}

namespace {
std::string make_chunk(const std::string& name, const std::string& data)
{
    const std::string text = name + data;
    const auto big_endian = [](std::size_t n) {
        const auto number = static_cast<int>(n);
        return bytes({number >> 24, number >> 16, number >> 8, number});
    };
    const uLong sum =
        crc32(0, reinterpret_cast<const Bytef*>(text.data()), static_cast<uInt>(text.size()));
    return big_endian(data.size()) + text + big_endian(sum);
}

/// The same PNG file with its samples in chunks of these sizes and of what is left, and up to
/// `size` bytes of them.
std::string part_samples(const std::string& file, std::initializer_list<std::size_t> sizes,
                         std::size_t size = std::string::npos)
{
    const std::size_t chunk = file.find("IDAT") - 4;
    const std::size_t end = file.find("IEND") - 4;
    const std::string data = file.substr(chunk + 8, end - chunk - 12).substr(0, size);
    std::string parted = file.substr(0, chunk);
    std::size_t at = 0;
    for (const std::size_t part : sizes) {
        parted += make_chunk("IDAT", data.substr(at, part));
        at += part;
    }
    return parted + make_chunk("IDAT", data.substr(at)) + file.substr(end);
}
} // namespace

TEST(PixmapReader, takes_the_samples_of_a_png_file_from_any_chunks)
{
    const TempFolder folder;
    const auto picture = make_soft_patch(300, 200, PT_RGBA_16);
    make_writer("PngWriter", 1)->write_pixmap(folder.path("a.png"), picture.get());
    const std::string file = folder.read("a.png");
    const auto is_read = [&](const std::string& contents) {
        folder.write("b.png", contents);
        const Pixmap pixmap = read(folder.path("b.png"), 16);
        return pixmap && inq_difference(*pixmap, *read(folder.path("a.png"), 16)) == 0;
    };
    EXPECT_TRUE(is_read(part_samples(file, {1, 0, 1, 100, 0})));
    const std::size_t size = file.find("IEND") - file.find("IDAT") - 12;
    EXPECT_TRUE(is_read(part_samples(file, {size}))); // the last one is empty
    for (const std::size_t lost : {size - 400, std::size_t{4}, std::size_t{1}})
        EXPECT_FALSE(is_read(part_samples(file, {50}, size - lost))) << lost;
    std::string damaged = part_samples(file, {50});
    damaged[file.find("IDAT") + 10] ^= 1;
    EXPECT_FALSE(is_read(damaged));
    EXPECT_FALSE(is_read(file.substr(0, file.size() - 12))); // without its end
    damaged = file;
    damaged.back() ^= 1;
    EXPECT_FALSE(is_read(damaged));
}

TEST(PixmapReader, is_not_misled_by_the_chunks_of_a_png_file)
{
    const TempFolder folder;
    const std::string mark = bytes({0x89}) + "PNG\r\n" + bytes({0x1A}) + "\n";
    const std::string head = make_chunk("IHDR", bytes({0, 0, 0, 2, 0, 0, 0, 1, 8, 0, 0, 0, 0}));
    const std::string end = make_chunk("IEND", "");
    unsigned char packed[64];
    uLongf size = sizeof packed;
    const unsigned char too_many[] = {0, 9, 8, 7, 6}; // two samples, behind how they are filtered
    ASSERT_EQ(compress(packed, &size, too_many, sizeof too_many), Z_OK);
    const std::string samples(reinterpret_cast<char*>(packed), size);
    const auto is_read = [&](const std::string& contents) {
        folder.write("a.png", mark + contents);
        const Pixmap pixmap = read(folder.path("a.png"), 8);
        return pixmap && inq_plane(*pixmap, 0) == Rows{{9, 8}};
    };
    EXPECT_TRUE(is_read(head + make_chunk("IDAT", samples) + end));
    EXPECT_TRUE(is_read(head + make_chunk("tEXt", std::string("Abc\0IDAT", 8)) +
                        make_chunk("IDAT", samples) + end));
    EXPECT_FALSE(is_read(head + make_chunk("IDAT", samples.substr(0, size - 5)) + end));
    EXPECT_FALSE(is_read(bytes({0, 0, 0, 5}) + "IDAT"));
    EXPECT_FALSE(is_read(head + bytes({0x7F, 0xFF, 0xFF, 0xF0}) + "tEXt" + end));
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 1 << 20); // KiB
}

TEST(PixmapReader, reads_targa_from_any_corner_and_compressed)
{
    const TempFolder folder;
    const std::string two_rows = bytes({1, 2, 3, 4});
    folder.write("up.tga", make_targa(3, 8, 0, two_rows, 2, 2));
    EXPECT_EQ(inq_plane(*read(folder.path("up.tga"), 8), 0), (Rows{{3, 4}, {1, 2}}));
    folder.write("right.tga", make_targa(3, 8, 0x30, two_rows, 2, 2));
    EXPECT_EQ(inq_plane(*read(folder.path("right.tga"), 8), 2), (Rows{{2, 1}, {4, 3}}));
    folder.write("runs.tga", make_targa(11, 8, 0x20, bytes({0x82, 7, 0x02, 1, 2, 3}), 3, 2));
    EXPECT_EQ(inq_plane(*read(folder.path("runs.tga"), 8), 1), (Rows{{7, 7, 7}, {1, 2, 3}}));
    folder.write("map.tga", bytes({0, 1, 1, 0, 0, 2, 0, 24, 0, 0, 0, 0, 2, 0, 1, 0, 8, 0x20}) +
                                bytes({1, 2, 3, 4, 5, 6, 1, 0}));
    EXPECT_EQ(inq_plane(*read(folder.path("map.tga"), 8), 0), (Rows{{6, 3}}));
}

TEST(PixmapReader, reads_the_portable_formats)
{
    const TempFolder folder;
    const std::pair<std::string, Rows> cases[] = {
        {"P1 # bits\n3 2\n101\n0 1 0\n", {{0, 255, 0}, {255, 0, 255}}},
        {"P2\n2 1\n# levels\n10\n0 5\n", {{0, 128}}},
        {"P3 1 2 255 1 2 3 4 5 6 ", {{1}, {4}}},
        {"P4 3 2\n" + bytes({0xA0, 0x40}), {{0, 255, 0}, {255, 0, 255}}},
        {"P5 2 1 255\n" + bytes({9, 8}), {{9, 8}}},
        {"P6 1 1 65535\n" + bytes({0x80, 0x80, 0, 0, 0, 0}), {{0x80}}}};
    for (const auto& [text, expected] : cases) {
        folder.write("a.pnm", text);
        const Pixmap pixmap = read(folder.path("a.pnm"), 8);
        ASSERT_TRUE(pixmap) << text;
        EXPECT_EQ(inq_plane(*pixmap, 0), expected) << text;
    }
}

TEST(PixmapReader, tells_what_is_wrong_with_a_file)
{
    const TempFolder folder;
    KIVString told;
    EXPECT_FALSE(read(folder.path("none.png"), 8, &told));
    EXPECT_TRUE(told ==
                "Can't read image " + folder.path("none.png") + ": No such file or directory");
    EXPECT_FALSE(read(folder.path(""), 8, &told));
    folder.write("empty", "");
    EXPECT_FALSE(read(folder.path("empty"), 8, &told));
    EXPECT_TRUE(told.contains("no known image format"));
    folder.write("huge.pgm", "P5 30000 30000 255\n1");
    EXPECT_FALSE(read(folder.path("huge.pgm"), 8, &told));
    EXPECT_TRUE(told.contains("doesn't fit the file"));
}

TEST(PixmapReader, finds_a_head_that_is_long_or_lies_at_the_end)
{
    const TempFolder folder;
    folder.write("a.pgm", "P5 #" + std::string(100000, '-') + "\n3 1 255\nabc");
    make_writer("TiffWriter", 0)
        ->write_pixmap(folder.path("b.tif"), make_soft_patch(300, 200, PT_RGBA_8).get());
    PictureInfo info;
    KIVString error;
    EXPECT_TRUE(inq_picture_info(folder.path("a.pgm"), info, error));
    EXPECT_EQ(info.width, 3);
    EXPECT_EQ(inq_plane(*read(folder.path("a.pgm"), 8), 0), (Rows{{'a', 'b', 'c'}}));
    EXPECT_TRUE(inq_picture_info(folder.path("b.tif"), info, error));
    EXPECT_EQ(info.width, 300);
    folder.write("a.pgm", "P5 #" + std::string(100000, '-'));
    EXPECT_FALSE(inq_picture_info(folder.path("a.pgm"), info, error));
    EXPECT_TRUE(error.contains("the head of the PNM file is damaged"));
}
