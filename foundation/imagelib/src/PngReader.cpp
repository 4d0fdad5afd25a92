#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"

#include <csetjmp>
#include <png.h>

namespace {
constexpr double METRES_PER_INCH = 0.0254;
constexpr png_alloc_size_t LARGEST_CHUNK = 16 << 20; // of text, profiles and the like
constexpr png_uint_32 LONGEST_SIDE = 1000000;

/// An error of the format's library jumps out of it into the step that called it: between the two
/// stand only locals that need no destructor.
class PngReader : public PictureReader {
public:
    explicit PngReader(Bytes file) : file(file) {}
    ~PngReader() override { png_destroy_read_struct(&png, &head, nullptr); }

    bool read_head(PictureInfo& info) override;
    bool read_pixels(KIVPixmap& picture) override;

private:
    bool prepare_head(PictureInfo& info);
    bool read_rows(KIVPixmap& picture);
    bool read_interlaced(KIVPixmap& picture);
    void note_resolution(PictureInfo& info) const;
    void note_profile(PictureInfo& info) const;

    static void read(png_structp png, png_bytep to, std::size_t count);
    [[noreturn]] static void take_error(png_structp png, png_const_charp text);
    static void take_warning(png_structp /*png*/, png_const_charp /*text*/) {}

    Bytes file;
    std::size_t position = 0;
    png_structp png = nullptr;
    png_infop head = nullptr;
    RowLayout layout = {};
    int passes = 1;
    std::vector<unsigned char> rows; // one, or all of an interlaced picture
    char message[128] = "damaged PNG file";
};

void PngReader::read(png_structp png, png_bytep to, std::size_t count)
{
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (reader->file.size() - reader->position < count)
        png_error(png, "the PNG file ends too early");
    std::memcpy(to, reader->file.data() + reader->position, count);
    reader->position += count;
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
        return fail("not enough memory");
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
    png_set_expand(png); // no palettes, nothing below 8 bits, transparent colours as alpha
    png_set_swap(png);   // 16 bits in the processor's order
    passes = png_set_interlace_handling(png);
    png_read_update_info(png, head);
    info.width = static_cast<int>(png_get_image_width(png, head));
    info.height = static_cast<int>(png_get_image_height(png, head));
    layout.samples = png_get_channels(png, head);
    layout.bits = png_get_bit_depth(png, head);
    layout.alpha = layout.samples % 2 == 0 ? Alpha::STRAIGHT : Alpha::NONE;
    note_resolution(info);
    note_profile(info);
    return true;
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

bool PngReader::read_pixels(KIVPixmap& picture)
{
    const std::size_t row = png_get_rowbytes(png, head);
    rows.resize(passes == 1 ? row : row * static_cast<std::size_t>(picture.inq_height()));
    const bool is_read = passes == 1 ? read_rows(picture) : read_interlaced(picture);
    return is_read || fail(message);
}

bool PngReader::read_rows(KIVPixmap& picture)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    for (int y = 0; y < picture.inq_height(); ++y) {
        png_read_row(png, rows.data(), nullptr);
        put_pixels(picture, 0, y, rows.data(), picture.inq_width(), layout);
    }
    return true;
}

bool PngReader::read_interlaced(KIVPixmap& picture)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    const std::size_t row = png_get_rowbytes(png, head);
    for (int pass = 0; pass < passes; ++pass)
        for (int y = 0; y < picture.inq_height(); ++y)
            png_read_row(png, rows.data() + static_cast<std::size_t>(y) * row, nullptr);
    for (int y = 0; y < picture.inq_height(); ++y)
        put_pixels(picture, 0, y, rows.data() + static_cast<std::size_t>(y) * row,
                   picture.inq_width(), layout);
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
