#include "imagelib/src/PictureReader.h"
#include "imagelib/src/PngInput.h"
#include "imagelib/src/orientation.h"
#include "imagelib/src/want_of_memory.h"

#include <csetjmp>
#include <new>
#include <png.h>

namespace {
constexpr double METRES_PER_INCH = 0.0254;
constexpr png_alloc_size_t LARGEST_CHUNK = 16 << 20; // of text, profiles and the like

/// An error of the format's library jumps out of it into the step that called it: between the two
/// stand only locals that need no destructor.
class PngReader : public PictureReader {
public:
    explicit PngReader(Bytes file) : input(file) {}
    ~PngReader() override { png_destroy_read_struct(&png, &head, nullptr); }

    bool read_head(PictureInfo& info) override;
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override
    {
        return MOST_BY_DEFLATE * 8 * file_bytes / std::max(1U, stored_bits);
    }
    bool read_pixels(RowTarget& target) override;

private:
    bool prepare_head(PictureInfo& info);
    bool read_rows(RowTarget& target);
    bool read_interlaced(RowTarget& target);
    void note_resolution(PictureInfo& info) const;
    void note_orientation();
    std::uint32_t inq_height() const { return png_get_image_height(png, head); }
    void note_profile(PictureInfo& info) const;

    const char* read_input(png_bytep to, std::size_t count);
    static void read(png_structp png, png_bytep to, std::size_t count);
    [[noreturn]] static void take_error(png_structp png, png_const_charp text);
    static void take_warning(png_structp /*png*/, png_const_charp /*text*/) {}

    PngInput input;
    png_structp png = nullptr;
    png_infop head = nullptr;
    unsigned stored_bits = 0; // of a pixel
    RowLayout layout = {};
    int passes = 1;
    std::unique_ptr<unsigned char[]> rows; // one, or all of an interlaced picture
    char message[128] = "damaged PNG file";
};

/// Null, or why the bytes can't be had. No exception may go through the format's library.
const char* PngReader::read_input(png_bytep to, std::size_t count)
{
    try {
        return input.read(to, count);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return WANT_OF_MEMORY;
    }
}

void PngReader::read(png_structp png, png_bytep to, std::size_t count)
{
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (const char* reason = reader->read_input(to, count))
        png_error(png, reason);
}

void PngReader::take_error(png_structp png, png_const_charp text)
{
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::strncpy(reader->message, text, sizeof(reader->message) - 1);
    png_longjmp(png, 1);
}

bool PngReader::read_head(PictureInfo& info)
{
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, take_error, take_warning);
    head = png ? png_create_info_struct(png) : nullptr;
    if (!head)
        return fail(WANT_OF_MEMORY);
    return prepare_head(info) || fail(message);
}

bool PngReader::prepare_head(PictureInfo& info)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_read_fn(png, this, read);
    png_set_user_limits(png, LONGEST_SIDE, LONGEST_SIDE);
    png_set_chunk_malloc_max(png, LARGEST_CHUNK);
    png_read_info(png, head);
    if (input.has_stored_samples()) {
        png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_NO_CHANGE);
        png_set_option(png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    }
    stored_bits = unsigned{png_get_bit_depth(png, head)} * png_get_channels(png, head);
    png_set_expand(png); // no palettes, nothing below 8 bits, transparent colours as alpha
    png_set_swap(png);   // 16 bits in the processor's order
    passes = png_set_interlace_handling(png);
    png_read_update_info(png, head);
    info.width = static_cast<int>(png_get_image_width(png, head));
    info.height = static_cast<int>(png_get_image_height(png, head));
    layout.samples = png_get_channels(png, head);
    layout.bits = png_get_bit_depth(png, head);
    layout.alpha = layout.samples % 2 == 0 ? Alpha::STRAIGHT : Alpha::NONE;
    info.bits = layout.bits;
    note_resolution(info);
    note_orientation();
    note_profile(info);
    return true;
}

void PngReader::note_orientation()
{
    png_uint_32 size = 0;
    png_bytep block = nullptr;
    if (png_get_eXIf_1(png, head, &size, &block) & PNG_INFO_eXIf)
        set_orientation(find_exif_orientation({block, size}));
}

void PngReader::note_resolution(PictureInfo& info) const
{
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (!png_get_pHYs(png, head, &x, &y, &unit) || unit != PNG_RESOLUTION_METER)
        return;
    info.x_dpi = x * METRES_PER_INCH;
    info.y_dpi = y * METRES_PER_INCH;
}

void PngReader::note_profile(PictureInfo& info) const
{
    png_charp name = nullptr;
    int compression = 0;
    png_bytep data = nullptr;
    png_uint_32 bytes = 0;
    if (png_get_iCCP(png, head, &name, &compression, &data, &bytes))
        info.profile.assign(data, data + bytes);
}

bool PngReader::read_pixels(RowTarget& target)
{
    const std::size_t row = png_get_rowbytes(png, head);
    rows = std::make_unique_for_overwrite<unsigned char[]>(passes == 1 ? row : row * inq_height());
    const bool is_read = passes == 1 ? read_rows(target) : read_interlaced(target);
    return is_read || fail(message);
}

/// To the end of the file, which must be there.
bool PngReader::read_rows(RowTarget& target)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    for (std::uint32_t y = 0; y < inq_height(); ++y) {
        png_read_row(png, rows.get(), nullptr);
        if (!target.put_row(static_cast<int>(y), rows.get(), layout))
            return false;
    }
    png_set_crc_action(png, PNG_CRC_DEFAULT, PNG_CRC_NO_CHANGE);
    png_read_end(png, nullptr);
    return true;
}

bool PngReader::read_interlaced(RowTarget& target)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const std::size_t row = png_get_rowbytes(png, head);
    for (int pass = 0; pass < passes; ++pass)
        for (std::uint32_t y = 0; y < inq_height(); ++y)
            png_read_row(png, rows.get() + y * row, nullptr);
    png_read_end(png, nullptr);
    for (std::uint32_t y = 0; y < inq_height(); ++y)
        if (!target.put_row(static_cast<int>(y), rows.get() + y * row, layout))
            return false;
    return true;
}
} // namespace

std::unique_ptr<PictureReader> make_png_reader(Bytes file)
{
    constexpr std::size_t MARK_BYTES = 8;
    if (file.size() < MARK_BYTES || png_sig_cmp(file.data(), 0, MARK_BYTES) != 0)
        return nullptr;
    return std::make_unique<PngReader>(file);
}
