#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/PictureReader.h"
#include "imagelib/src/TiffStream.h"

namespace {
constexpr double CENTIMETRES_PER_INCH = 2.54;
constexpr std::size_t LARGEST_BLOCK = std::size_t{1} << 30;

/// TIFF. Whole samples of 8 and 16 bits in common layouts are taken as they are; the many others
/// as the format's library turns them into 8 bits.
class TiffReader : public PictureReader {
public:
    TiffReader(const FileHandle& file, std::size_t size) : stream(file, size, LARGEST_BLOCK) {}

    bool needs_whole_file() const override { return false; }

    bool read_head(PictureInfo& info) override;
    bool read_pixels(KIVPixmap& picture) override;

private:
    bool fail_as_told(const char* otherwise);
    void note_resolution(PictureInfo& info) const;
    void note_profile(PictureInfo& info) const;
    Alpha inq_alpha() const;
    bool is_plain() const;
    bool read_strips(KIVPixmap& picture, const RowLayout& layout);
    bool read_tiles(KIVPixmap& picture, const RowLayout& layout);
    bool read_tile(KIVPixmap& picture, const RowLayout& layout, int x, int y);
    bool read_through_library(KIVPixmap& picture);

    TiffStream stream;
    TIFF* tiff = nullptr;
    std::vector<unsigned char> block;
};

template <class Value> Value get_field(TIFF* tiff, std::uint32_t tag)
{
    Value value = {};
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

bool TiffReader::fail_as_told(const char* otherwise)
{
    const KIVString& told = stream.inq_error();
    return fail(told.is_null() ? KIVString(otherwise) : told);
}

bool TiffReader::read_head(PictureInfo& info)
{
    tiff = stream.open_to_read();
    if (!tiff)
        return fail_as_told("damaged TIFF file");
    const auto width = get_field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH);
    const auto height = get_field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    constexpr std::uint32_t MOST = std::numeric_limits<int>::max();
    info.width = static_cast<int>(std::min(width, MOST));
    info.height = static_cast<int>(std::min(height, MOST));
    note_resolution(info);
    note_profile(info);
    return true;
}

void TiffReader::note_resolution(PictureInfo& info) const
{
    const auto unit = get_field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT);
    if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER)
        return;
    const double factor = unit == RESUNIT_INCH ? 1.0 : CENTIMETRES_PER_INCH;
    float x = 0.0F;
    float y = 0.0F;
    if (!TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) ||
        !TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y))
        return;
    info.x_dpi = static_cast<double>(x) * factor;
    info.y_dpi = static_cast<double>(y) * factor;
}

void TiffReader::note_profile(PictureInfo& info) const
{
    std::uint32_t bytes = 0;
    const unsigned char* data = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &bytes, &data) && bytes <= LARGEST_PROFILE)
        info.profile.assign(data, data + bytes);
}

/// A fourth sample of which nothing is said counts as associated alpha.
Alpha TiffReader::inq_alpha() const
{
    const auto samples = get_field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL);
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (samples % 2 == 1)
        return Alpha::NONE;
    return count > 0 && kinds[0] == EXTRASAMPLE_UNASSALPHA ? Alpha::STRAIGHT : Alpha::PREMULTIPLIED;
}

bool TiffReader::is_plain() const
{
    const auto samples = get_field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL);
    const auto bits = get_field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE);
    std::uint16_t colours = PHOTOMETRIC_PALETTE;
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &colours);
    const bool is_colour = colours == PHOTOMETRIC_RGB && (samples == 3 || samples == 4);
    const bool is_grey = colours == PHOTOMETRIC_MINISBLACK && (samples == 1 || samples == 2);
    return (is_colour || is_grey) && (bits == 8 || bits == 16) &&
           get_field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_UINT &&
           get_field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG &&
           get_field<std::uint16_t>(tiff, TIFFTAG_ORIENTATION) == ORIENTATION_TOPLEFT;
}

bool TiffReader::read_pixels(KIVPixmap& picture)
{
    if (!is_plain())
        return read_through_library(picture);
    const RowLayout layout = {get_field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL),
                              get_field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE), inq_alpha()};
    return TIFFIsTiled(tiff) ? read_tiles(picture, layout) : read_strips(picture, layout);
}

bool TiffReader::read_strips(KIVPixmap& picture, const RowLayout& layout)
{
    const std::size_t row = layout.inq_bytes() * static_cast<std::size_t>(picture.inq_width());
    const auto told = get_field<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP);
    const auto height = static_cast<std::uint32_t>(picture.inq_height());
    const int rows_per_strip = static_cast<int>(std::clamp(told, 1U, height));
    block.resize(row * static_cast<std::size_t>(rows_per_strip));
    std::uint32_t strip = 0;
    for (int first = 0; first < picture.inq_height(); first += rows_per_strip, ++strip) {
        const int rows = std::min(rows_per_strip, picture.inq_height() - first);
        const auto bytes = static_cast<tmsize_t>(row * static_cast<std::size_t>(rows));
        if (TIFFReadEncodedStrip(tiff, strip, block.data(), bytes) != bytes)
            return fail_as_told("the TIFF file ends too early, or is damaged");
        for (int y = 0; y < rows; ++y)
            put_pixels(picture, 0, first + y, block.data() + static_cast<std::size_t>(y) * row,
                       picture.inq_width(), layout);
    }
    return true;
}

bool TiffReader::read_tiles(KIVPixmap& picture, const RowLayout& layout)
{
    const auto width = get_field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH);
    const auto height = get_field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH);
    constexpr std::uint32_t LARGEST = 1 << 14;
    if (width == 0 || height == 0 || width > LARGEST || height > LARGEST)
        return fail("the tiles of the TIFF file have no sane size");
    block.resize(layout.inq_bytes() * width * height);
    for (int y = 0; y < picture.inq_height(); y += static_cast<int>(height))
        for (int x = 0; x < picture.inq_width(); x += static_cast<int>(width))
            if (!read_tile(picture, layout, x, y))
                return false;
    return true;
}

bool TiffReader::read_tile(KIVPixmap& picture, const RowLayout& layout, int x, int y)
{
    const std::uint32_t tile =
        TIFFComputeTile(tiff, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 0, 0);
    const auto bytes = static_cast<tmsize_t>(block.size());
    if (TIFFReadEncodedTile(tiff, tile, block.data(), bytes) != bytes)
        return fail_as_told("the TIFF file ends too early, or is damaged");
    const int width = static_cast<int>(get_field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH));
    const int height = static_cast<int>(get_field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH));
    const std::size_t row = layout.inq_bytes() * static_cast<std::size_t>(width);
    const int columns = std::min(width, picture.inq_width() - x);
    const int rows = std::min(height, picture.inq_height() - y);
    for (int i = 0; i < rows; ++i)
        put_pixels(picture, x, y + i, block.data() + static_cast<std::size_t>(i) * row, columns,
                   layout);
    return true;
}

/// The library gives premultiplied pixels.
bool TiffReader::read_through_library(KIVPixmap& picture)
{
    constexpr int STOP_AT_ERRORS = 1;
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(tiff, reason))
        return fail(reason);
    const auto width = static_cast<std::uint32_t>(picture.inq_width());
    const auto height = static_cast<std::uint32_t>(picture.inq_height());
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
    if (!TIFFReadRGBAImageOriented(tiff, width, height, pixels.data(), ORIENTATION_TOPLEFT,
                                   STOP_AT_ERRORS))
        return fail_as_told("damaged TIFF file");
    for (int y = 0; y < picture.inq_height(); ++y)
        put_pixels(picture, 0, y, pixels.data() + static_cast<std::size_t>(y) * width,
                   picture.inq_width(), {4, 8, Alpha::PREMULTIPLIED});
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
    return std::make_unique<TiffReader>(file, size);
}
