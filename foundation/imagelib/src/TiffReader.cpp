#include "imagelib/src/PictureReader.h"
#include "imagelib/src/TiffPage.h"
#include "imagelib/src/TiffStream.h"
#include "imagelib/src/TiffStrips.h"
#include "imagelib/src/row_kernels.h"

namespace {
/// One of the pictures of a TIFF file.
class TiffReader : public PictureReader {
public:
    TiffReader(const FileHandle& file, std::size_t size, int number)
        : file(file), size(size), stream(file, size, LARGEST_TIFF_BLOCK), number(number)
    {}

    bool needs_whole_file() const override { return false; }

    bool read_head(PictureInfo& info) override;
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override;
    bool read_pixels(RowTarget& target) override;

private:
    bool fail_as_told(const char* otherwise) { return fail(stream.inq_error(otherwise)); }
    void note_profile(PictureInfo& info) const;
    bool read_bands(RowTarget& target);
    bool put_rows_straight(RowTarget& target, const TiffStrips& strips, int first, int rows) const;
    bool put_rows(RowTarget& target, int first, int rows, bool have_differences);
    bool read_band(int first, int rows);
    bool read_block(unsigned char* to, int x, int y, int rows, int plane);
    void put_block(int x, int rows, int plane);
    bool read_through_library(RowTarget& target);
    std::size_t inq_row_bytes() const
    {
        return page.layout.inq_bytes() * static_cast<std::size_t>(page.width);
    }

    const FileHandle& file; // not owned
    std::size_t size;
    TiffStream stream;
    int number;
    TIFF* tiff = nullptr;
    TiffPage page;
    // Not cleared: what a damaged file only claims to hold costs no memory.
    std::size_t band_bytes = 0;
    std::unique_ptr<unsigned char[]> band;  // the rows of a strip, or of tiles side by side
    std::unique_ptr<unsigned char[]> block; // null if blocks are bands
};

bool TiffReader::read_head(PictureInfo& info)
{
    tiff = stream.open_to_read();
    if (!tiff || (number > 0 && !TIFFSetDirectory(tiff, static_cast<tdir_t>(number))))
        return fail_as_told("damaged TIFF file");
    page = TiffPage::look(tiff);
    info.width = page.width;
    info.height = page.height;
    info.bits = page.is_plain ? page.layout.bits : 8;
    info.is_tiled = page.is_tiled;
    set_orientation(page.orientation);
    get_tiff_resolution(tiff, info.x_dpi, info.y_dpi);
    note_profile(info);
    return true;
}

std::uint64_t TiffReader::inq_most_pixels(std::uint64_t file_bytes) const
{
    const std::uint64_t pixels = 8 * file_bytes / std::max(std::size_t{1}, page.layout.inq_bits());
    constexpr std::uint64_t MOST_BY_PACKBITS = 64;
    constexpr std::uint64_t MOST_BY_OTHERS = 4096;
    if (!page.is_plain)
        return MOST_BY_OTHERS * file_bytes;
    switch (get_tiff_field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION)) {
    case COMPRESSION_NONE:
        return pixels;
    case COMPRESSION_PACKBITS:
        return MOST_BY_PACKBITS * pixels;
    case COMPRESSION_LZW:
        return MOST_BY_LZW * pixels;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
        return MOST_BY_DEFLATE * pixels;
    default:
        return MOST_BY_OTHERS * pixels;
    }
}

void TiffReader::note_profile(PictureInfo& info) const
{
    std::uint32_t bytes = 0;
    const unsigned char* data = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &bytes, &data) && bytes <= LARGEST_PROFILE)
        info.profile.assign(data, data + bytes);
}

bool TiffReader::read_pixels(RowTarget& target)
{
    const bool is_read = page.is_plain ? read_bands(target) : read_through_library(target);
    return is_read && (!stream.has_ended_early() || fail("the TIFF file ends too early"));
}

bool TiffReader::read_bands(RowTarget& target)
{
    if (!page.is_sane())
        return fail("the blocks of the TIFF file have no sane size");
    const int band_height = std::min(page.block_height, page.height);
    band_bytes = inq_row_bytes() * static_cast<std::size_t>(band_height);
    band = std::make_unique_for_overwrite<unsigned char[]>(band_bytes);
    if (page.is_tiled || page.is_in_planes)
        block = std::make_unique_for_overwrite<unsigned char[]>(page.inq_block_bytes());
    TiffStrips strips(tiff, page, file, size);
    for (int first = 0; first < page.height; first += page.block_height) {
        const int rows = std::min(band_height, page.height - first);
        if (put_rows_straight(target, strips, first, rows))
            continue;
        const bool is_quick =
            strips.read(first, band.get(), static_cast<std::size_t>(rows) * inq_row_bytes());
        if (!is_quick && !read_band(first, rows))
            return false;
        if (!put_rows(target, first, rows, is_quick && strips.have_differences()))
            return fail_by_target();
    }
    return true;
}

/// Plain rows of the file that lie in the target as they do there, in pieces that stay in the
/// processor's cache until they are noted. False if they don't.
bool TiffReader::put_rows_straight(RowTarget& target, const TiffStrips& strips, int first,
                                   int rows) const
{
    constexpr std::size_t PIECE_BYTES = 1 << 18;
    unsigned char* const place =
        strips.are_plain() ? target.inq_place(first, page.layout) : nullptr;
    const std::size_t row_bytes = inq_row_bytes();
    const std::size_t bytes = static_cast<std::size_t>(rows) * row_bytes;
    const auto last_row = static_cast<std::ptrdiff_t>(bytes - row_bytes);
    if (!place || target.inq_place(first + rows - 1, page.layout) != place + last_row)
        return false;
    const std::size_t step = std::max(std::size_t{1}, PIECE_BYTES / row_bytes) * row_bytes;
    for (std::size_t done = 0; done < bytes; done += step) {
        const std::size_t piece = std::min(step, bytes - done);
        if (!strips.read_plain(first, done, place + done, piece))
            return false;
        target.note_rows(first + static_cast<int>((done + piece) / row_bytes));
    }
    return true;
}

/// The rows of the band.
bool TiffReader::put_rows(RowTarget& target, int first, int rows, bool have_differences)
{
    for (int y = first; y < first + rows; ++y) {
        unsigned char* row = band.get() + static_cast<std::size_t>(y - first) * inq_row_bytes();
        unsigned char* const place = have_differences ? target.inq_place(y, page.layout) : nullptr;
        if (have_differences)
            add_differences(place ? place : row, row, inq_row_bytes(), page.layout.inq_bytes(),
                            page.layout.bits);
        if (place)
            target.note_rows(y + 1);
        else if (!target.put_row(y, row, page.layout))
            return false;
    }
    return true;
}

bool TiffReader::read_band(int first, int rows)
{
    const int planes = page.is_in_planes ? page.layout.samples : 1;
    for (int plane = 0; plane < planes; ++plane)
        for (int x = 0; x < page.width; x += page.block_width) {
            if (!read_block(block ? block.get() : band.get(), x, first, rows, plane))
                return fail_as_told("the TIFF file ends too early, or is damaged");
            if (block)
                put_block(x, rows, plane);
        }
    if (page.is_negative)
        for (std::size_t i = 0; i < band_bytes; ++i)
            band[i] = static_cast<unsigned char>(~band[i]);
    return true;
}

bool TiffReader::read_block(unsigned char* to, int x, int y, int rows, int plane)
{
    const auto row = static_cast<std::uint32_t>(y);
    const auto sample = static_cast<std::uint16_t>(plane);
    if (page.is_tiled) {
        const std::uint32_t tile =
            TIFFComputeTile(tiff, static_cast<std::uint32_t>(x), row, 0, sample);
        const auto bytes = static_cast<tmsize_t>(page.inq_block_bytes());
        return TIFFReadEncodedTile(tiff, tile, to, bytes) == bytes;
    }
    const auto bytes =
        static_cast<tmsize_t>(page.inq_block_bytes() / static_cast<std::size_t>(page.block_height) *
                              static_cast<std::size_t>(rows));
    return TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, row, sample), to, bytes) == bytes;
}

/// From the block into the band, as whole pixels or as one sample of each.
void TiffReader::put_block(int x, int rows, int plane)
{
    const auto sample_bytes = static_cast<std::size_t>(page.layout.bits / 8);
    const std::size_t pixel_bytes = page.layout.inq_bytes();
    const std::size_t step = page.is_in_planes ? sample_bytes : pixel_bytes;
    const auto columns = static_cast<std::size_t>(std::min(page.block_width, page.width - x));
    for (int i = 0; i < rows; ++i) {
        unsigned char* to = band.get() + static_cast<std::size_t>(i) * inq_row_bytes() +
                            static_cast<std::size_t>(x) * pixel_bytes +
                            static_cast<std::size_t>(plane) * sample_bytes;
        const unsigned char* from =
            block.get() + static_cast<std::size_t>(i * page.block_width) * step;
        if (!page.is_in_planes)
            std::memcpy(to, from, columns * step);
        else
            for (std::size_t n = 0; n < columns; ++n, to += pixel_bytes, from += step)
                std::memcpy(to, from, step);
    }
}

/// The library gives premultiplied pixels. Asked for them as they lie, it turns nothing.
bool TiffReader::read_through_library(RowTarget& target)
{
    constexpr int STOP_AT_ERRORS = 1;
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(tiff, reason))
        return fail(reason);
    const auto width = static_cast<std::uint32_t>(page.width);
    const auto height = static_cast<std::uint32_t>(page.height);
    const auto pixels =
        std::make_unique_for_overwrite<std::uint32_t[]>(std::size_t{width} * height);
    if (!TIFFReadRGBAImageOriented(tiff, width, height, pixels.get(), inq_orientation(),
                                   STOP_AT_ERRORS))
        return fail_as_told("damaged TIFF file");
    for (int y = 0; y < page.height; ++y)
        if (!target.put_row(y, pixels.get() + std::size_t{width} * static_cast<unsigned>(y),
                            {4, 8, Alpha::PREMULTIPLIED}))
            return fail_by_target();
    return true;
}
} // namespace

std::unique_ptr<PictureReader> make_tiff_reader(Bytes start, const FileHandle& file,
                                                std::size_t size)
{
    if (start.size() < 8)
        return nullptr;
    const bool is_tiff =
        std::memcmp(start.data(), "II", 2) == 0 || std::memcmp(start.data(), "MM", 2) == 0;
    const int version = start[0] == 'I' ? start[2] | start[3] << 8 : start[2] << 8 | start[3];
    constexpr int CLASSIC = 42;
    constexpr int BIG = 43;
    if (!is_tiff || (version != CLASSIC && version != BIG))
        return nullptr;
    constexpr int FIRST_PAGE = 0;
    return make_tiff_page_reader(file, size, FIRST_PAGE);
}

std::unique_ptr<PictureReader> make_tiff_page_reader(const FileHandle& file, std::size_t size,
                                                     int page)
{
    return std::make_unique<TiffReader>(file, size, page);
}
