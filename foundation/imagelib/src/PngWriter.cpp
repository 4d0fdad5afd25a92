#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/BigEndian.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "imagelib/src/ZlibPacker.h"
#include "imagelib/src/row_kernels.h"
#include "kivlib/hdr/ByteBuffer.h"

#include <csetjmp>
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

bool pack_pixels(ByteBuffer& packed, const KIVPixmap& pixmap)
{
    ByteBuffer filtered;
    if (!put_filtered_rows(filtered, pixmap) ||
        !packed.reset(ZlibPacker::inq_most(filtered.size())))
        return false;
    packed.set_size(ZlibPacker().pack(filtered.data(), filtered.size(), packed.data()));
    return packed.size() > 0;
}

/// Under a name of its own, as the format wants it. Empty without a profile; false without memory.
bool pack_profile(ByteBuffer& chunk)
{
    constexpr char NAME_AND_METHOD[] = "Output profile\0"; // and another zero
    const ProfileData& profile = inq_colour_manager()->inq_frame_profile_data();
    if (profile.empty())
        return true;
    chunk.append(NAME_AND_METHOD, sizeof NAME_AND_METHOD);
    const std::size_t begin = chunk.size();
    char* const to = chunk.extend(ZlibPacker::inq_most(profile.size()));
    if (!to)
        return false;
    const std::size_t size = ZlibPacker().pack(profile.data(), profile.size(), to);
    chunk.set_size(begin + size);
    return size > 0;
}

[[noreturn]] void leave(png_structp png, png_const_charp /*text*/)
{
    png_longjmp(png, 1);
}

void append(png_structp png, png_bytep from, std::size_t count)
{
    static_cast<ByteBuffer*>(png_get_io_ptr(png))->append(from, count);
}

void put_chunk(png_structp png, const char* name, const ByteBuffer& contents)
{
    png_write_chunk(png, reinterpret_cast<png_const_bytep>(name),
                    reinterpret_cast<png_const_bytep>(contents.data()), contents.size());
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
bool put_chunks(png_structp png, png_infop head, const KIVPixmap& pixmap, const ByteBuffer& profile,
                const ByteBuffer& packed)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_IHDR(png, head, static_cast<png_uint_32>(pixmap.inq_width()),
                 static_cast<png_uint_32>(pixmap.inq_height()), pixmap.inq_bits_per_sample(),
                 pixmap.inq_alpha() ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    set_resolution(png, head, pixmap);
    png_write_info(png, head);
    if (profile.size() > 0)
        put_chunk(png, "iCCP", profile);
    put_chunk(png, "IDAT", packed);
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    return true;
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
    ByteBuffer profile;
    ByteBuffer packed;
    if (!pack_profile(profile) || !pack_pixels(packed, pixmap))
        return WRITE_NO_MEMORY;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, leave,
                                              [](png_structp, png_const_charp) {});
    png_infop head = png ? png_create_info_struct(png) : nullptr;
    WriteError result = WRITE_NO_MEMORY;
    if (head) {
        png_set_write_fn(png, &contents, append, nullptr);
        const bool is_whole = put_chunks(png, head, pixmap, profile, packed);
        result = is_whole ? WRITE_OKAY : WRITE_CANNOT_ENCODE;
    }
    png_destroy_write_struct(&png, &head);
    return result;
}

[[maybe_unused]] const auto* const PNG_WRITER = new KIVPixmapWriterDescriptor(
    "PngWriter", [](int /*variant*/) -> gsl::owner<KIVPixmapWriter*> { return new PngWriter; });
} // namespace
