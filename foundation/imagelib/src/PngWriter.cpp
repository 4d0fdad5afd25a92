#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/BigEndian.h"
#include "imagelib/src/FileContents.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "imagelib/src/ZlibPacker.h"
#include "imagelib/src/row_kernels.h"

#include <csetjmp>
#include <libdeflate.h>
#include <png.h>

namespace {
/// PNG at the pixmap's own depth, with straight alpha.
class PngWriter : public KIVPixmapWriter {
protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "png"; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;
};

constexpr double INCHES_PER_METRE = 1.0 / 0.0254;
constexpr std::size_t MOST_BYTES = 0x7F000000; // a chunk, and what a block may grow by, has 31 bits

/// All rows as differences to the pixel on the left, each after the number that says so.
bool put_filtered_rows(ByteBuffer& filtered, const KIVPixmap& pixmap)
{
    constexpr char DIFFERENCE_TO_THE_LEFT = 1;
    const auto pixel_bytes = static_cast<std::size_t>(pixmap.inq_bytes_per_pixel());
    const std::size_t row_bytes = static_cast<std::size_t>(pixmap.inq_width()) * pixel_bytes;
    char* to = filtered.reset((1 + row_bytes) * static_cast<std::size_t>(pixmap.inq_height()));
    if (!to)
        return false;
    const bool is_deep = pixmap.inq_bits_per_sample() == 16;
    std::vector<std::uint16_t> swapped(is_deep ? row_bytes / 2 : 0);
    FileRows rows(pixmap, pixmap.inq_type(), Alpha::STRAIGHT);
    for (int y = 0; y < pixmap.inq_height(); ++y, to += row_bytes) {
        const void* row = rows.inq_row(y);
        if (is_deep) {
            swap_bytes(swapped.data(), row, row_bytes / 2);
            row = swapped.data();
        }
        *to++ = DIFFERENCE_TO_THE_LEFT;
        put_differences(to, row, row_bytes, pixel_bytes, 8);
    }
    return true;
}

/// A chunk that is put to the end of the contents.
class Chunk {
public:
    Chunk(ByteBuffer& contents, const char* name) : contents(contents), begin(contents.size())
    {
        constexpr char LENGTH[4] = {};
        contents.append(LENGTH, sizeof(LENGTH));
        contents.append(name, NAME_BYTES);
    }

    /// The bytes as a whole zlib stream. False without memory.
    bool pack(const void* from, std::size_t count)
    {
        const std::size_t old_size = contents.size();
        char* const to = contents.extend(ZlibPacker::inq_most(count));
        const std::size_t size = to ? ZlibPacker().pack(from, count, to) : 0;
        contents.set_size(old_size + size);
        return size > 0;
    }

    /// Comes last. False without memory, if not before.
    bool end()
    {
        unsigned char checksum[4];
        if (contents.has_failed())
            return false;
        auto* const head = reinterpret_cast<unsigned char*>(contents.data() + begin);
        const std::size_t bytes = contents.size() - begin - HEAD_BYTES;
        BigEndian(head).put_32(static_cast<unsigned>(bytes));
        BigEndian(checksum).put_32(
            libdeflate_crc32(0, head + HEAD_BYTES - NAME_BYTES, NAME_BYTES + bytes));
        contents.append(checksum, sizeof(checksum));
        return !contents.has_failed();
    }

private:
    static constexpr std::size_t NAME_BYTES = 4;
    static constexpr std::size_t HEAD_BYTES = 8; // the length and the name

    ByteBuffer& contents;
    const std::size_t begin;
};

/// Under a name of its own, as the format wants it; nothing without a profile. False without
/// memory.
bool put_profile(ByteBuffer& contents)
{
    constexpr char NAME_AND_METHOD[] = "Output profile\0"; // and another zero
    const ProfileData& profile = inq_colour_manager()->inq_frame_profile_data();
    if (profile.empty())
        return true;
    Chunk chunk(contents, "iCCP");
    contents.append(NAME_AND_METHOD, sizeof NAME_AND_METHOD);
    return chunk.pack(profile.data(), profile.size()) && chunk.end();
}

/// False without memory.
bool put_pixels(ByteBuffer& contents, const KIVPixmap& pixmap)
{
    FileContents filtered;
    Chunk chunk(contents, "IDAT");
    return put_filtered_rows(*filtered, pixmap) &&
           chunk.pack((*filtered).data(), (*filtered).size()) && chunk.end();
}

[[noreturn]] void leave(png_structp png, png_const_charp /*text*/)
{
    png_longjmp(png, 1);
}

void append(png_structp png, png_bytep from, std::size_t count)
{
    static_cast<ByteBuffer*>(png_get_io_ptr(png))->append(from, count);
}

void set_resolution(png_structp png, png_infop head, const KIVPixmap& pixmap)
{
    const auto to_metres = [](double dpi) {
        return static_cast<png_uint_32>(std::lround(dpi * INCHES_PER_METRE));
    };
    if (pixmap.inq_x_dpi() > 0.0 && pixmap.inq_y_dpi() > 0.0)
        png_set_pHYs(png, head, to_metres(pixmap.inq_x_dpi()), to_metres(pixmap.inq_y_dpi()),
                     PNG_RESOLUTION_METER);
}

/// An error of the format's library jumps back to here, past nothing that needs a destructor.
bool put_head_chunks(png_structp png, png_infop head, const KIVPixmap& pixmap)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_IHDR(png, head, static_cast<png_uint_32>(pixmap.inq_width()),
                 static_cast<png_uint_32>(pixmap.inq_height()), pixmap.inq_bits_per_sample(),
                 pixmap.inq_alpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    set_resolution(png, head, pixmap);
    png_write_info(png, head);
    return true;
}

KIVPixmapWriter::WriteError put_head(ByteBuffer& contents, const KIVPixmap& pixmap)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leave,
                                              [](png_structp, png_const_charp) {});
    png_infop head = png ? png_create_info_struct(png) : nullptr;
    KIVPixmapWriter::WriteError result = KIVPixmapWriter::WRITE_NO_MEMORY;
    if (head) {
        png_set_write_fn(png, &contents, append, nullptr);
        result = put_head_chunks(png, head, pixmap) ? KIVPixmapWriter::WRITE_OKAY
                                                    : KIVPixmapWriter::WRITE_CANNOT_ENCODE;
    }
    png_destroy_write_struct(&png, &head);
    return result;
}

bool PngWriter::is_whole(const WrittenFile& file, const PictureForm& form) const
{
    unsigned char head[26] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',
                              0,    0,   0,   13,  'I',  'H',  'D',  'R'};
    BigEndian sizes(head);
    sizes(16).put_32(static_cast<unsigned>(form.width)).put_32(static_cast<unsigned>(form.height));
    sizes.put_8(static_cast<unsigned>(form.bits));
    sizes.put_8(form.samples == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB);
    return file.has(0, head) && file.can_be_read(form);
}

KIVPixmapWriter::WriteError PngWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    if (pixmap.inq_bytes() > MOST_BYTES)
        return WRITE_WRONG_SIZE;
    const WriteError failure = put_head(contents, pixmap);
    if (failure != WRITE_OKAY)
        return failure;
    const bool is_whole =
        put_profile(contents) && put_pixels(contents, pixmap) && Chunk(contents, "IEND").end();
    return is_whole ? WRITE_OKAY : WRITE_NO_MEMORY;
}

[[maybe_unused]] const auto* const PNG_WRITER = new KIVPixmapWriterDescriptor(
    "PngWriter", [](int /*variant*/) -> gsl::owner<KIVPixmapWriter*> { return new PngWriter; });
} // namespace
