#include "imagelib/hdr/make_tiled_image.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "imagelib/src/PictureReader.h"
#include "imagelib/src/TiffStream.h"
#include "imagelib/src/reduce.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/AbortPanel.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int TILE_SIZE = 256;
constexpr int SAMPLES = 4;

/// A TIFF file that grows on disc.
class GrowingTiff {
public:
    ~GrowingTiff() { close(); }

    /// With room for more than 4 GB if needed.
    bool open(const FileHandle& file, bool is_large);
    void close()
    {
        if (tiff)
            TIFFClose(tiff);
        tiff = nullptr;
    }

    TIFF* inq_tiff() const { return tiff; }
    KIVString inq_error(const char* otherwise) const { return words.inq_text(otherwise); }

private:
    static int take_error(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format,
                          va_list values)
    {
        static_cast<GrowingTiff*>(self)->words.take(format, values);
        return 1;
    }

    TIFF* tiff = nullptr;
    TiffWords words;
};

bool GrowingTiff::open(const FileHandle& file, bool is_large)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    const int own_descriptor = ::dup(file.inq_descriptor()); // the library closes it
    if (options) {
        TIFFOpenOptionsSetErrorHandlerExtR(options, take_error, this);
        tiff = TIFFFdOpenExt(own_descriptor, "", is_large ? "w8l" : "wl", options);
        TIFFOpenOptionsFree(options);
    }
    if (!tiff && own_descriptor >= 0)
        ::close(own_descriptor);
    return tiff != nullptr;
}

/// What one of the pages holds.
struct PageSize {
    int width;
    int height;
    int bits;
};

/// A page of a growing file, which it fills from the top, a row of tiles at a time.
class TilePage : public RowTarget {
public:
    /// `abort` may be null.
    TilePage(TIFF* tiff, const PageSize& size, AbortPanel* abort)
        : tiff(tiff), size(size), abort(abort),
          tiles(size.width, TILE_SIZE, SAMPLES, size.bits, nullptr, false),
          tile(static_cast<std::size_t>(TILE_SIZE * TILE_SIZE * tiles.inq_bytes_per_pixel()))
    {}

    /// False without memory.
    bool begin(bool is_full_size, const PictureInfo& info);
    bool put_row(int y, const void* pixels, const RowLayout& layout) override;

    /// False if rows are missing.
    bool end() { return row_count == size.height && TIFFWriteDirectory(tiff); }

    bool has_failed() const { return failed; }

private:
    bool write_tiles(int first_row);

    TIFF* tiff;
    PageSize size;
    AbortPanel* abort;               // not owned
    KIVPixmap tiles;                 // side by side
    std::vector<unsigned char> tile; // one of them, whole
    int row_count = 0;
    bool failed = false; // to write
};

bool TilePage::begin(bool is_full_size, const PictureInfo& info)
{
    constexpr char TEXTURE[] = "Plain Texture";
    constexpr char WRAP_MODES[] = "black,black";
    constexpr std::uint16_t KIND = EXTRASAMPLE_ASSOCALPHA;
    constexpr int QUICK_LEVEL = 4;
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, is_full_size ? 0 : FILETYPE_REDUCEDIMAGE);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, TILE_SIZE);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, TILE_SIZE);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, SAMPLES);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, size.bits);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &KIND);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, QUICK_LEVEL);
    TIFFSetField(tiff, TIFFTAG_PIXAR_TEXTUREFORMAT, TEXTURE);
    TIFFSetField(tiff, TIFFTAG_PIXAR_WRAPMODES, WRAP_MODES);
    if (is_full_size && info.x_dpi > 0.0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, info.x_dpi);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, info.y_dpi);
    }
    if (is_full_size && !info.profile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(info.profile.size()),
                     info.profile.data());
    return tiles.inq_data() != nullptr;
}

bool TilePage::put_row(int y, const void* pixels, const RowLayout& layout)
{
    ++row_count;
    put_pixels(tiles, 0, y % TILE_SIZE, pixels, size.width, layout);
    const bool is_last = (y + 1) % TILE_SIZE == 0 || y + 1 == size.height;
    if (!is_last)
        return true;
    return !(abort && abort->inq_abort()) && write_tiles(y / TILE_SIZE * TILE_SIZE);
}

bool TilePage::write_tiles(int first_row)
{
    const auto pixel = static_cast<std::size_t>(tiles.inq_bytes_per_pixel());
    const int rows = std::min(TILE_SIZE, size.height - first_row);
    for (int x = 0; x < size.width; x += TILE_SIZE) {
        const auto columns = static_cast<std::size_t>(std::min(TILE_SIZE, size.width - x));
        std::ranges::fill(tile, 0);
        for (int y = 0; y < rows; ++y)
            std::memcpy(tile.data() + static_cast<std::size_t>(y * TILE_SIZE) * pixel,
                        tiles.inq_row(y) + static_cast<std::size_t>(x) * pixel, columns * pixel);
        const std::uint32_t number = TIFFComputeTile(tiff, static_cast<std::uint32_t>(x),
                                                     static_cast<std::uint32_t>(first_row), 0, 0);
        const auto bytes = static_cast<tmsize_t>(tile.size());
        failed = failed || TIFFWriteEncodedTile(tiff, number, tile.data(), bytes) != bytes;
    }
    return !failed;
}

/// Fills a page with the rows of the next larger one.
class HalvedRows : public RowTarget {
public:
    HalvedRows(const PageSize& larger, TilePage& page)
        : reducer(larger.width, larger.height, larger.bits), page(page)
    {}

    bool put_row(int /*y*/, const void* pixels, const RowLayout& layout) override
    {
        const unsigned char* row = reducer.take_row(pixels);
        return !row || page.put_row(next++, row, layout);
    }

private:
    RowReducer reducer;
    TilePage& page;
    int next = 0;
};

/// The making of one file.
class TiledImage {
public:
    TiledImage(const KIVString& image, const KIVString& tiled_image, AbortPanel* abort)
        : image(image), path(tiled_image), abort(abort)
    {}

    bool make(KIVString& error);

private:
    bool begin(const PictureInfo& info);
    bool write_full_size(KIVString& error);
    bool write_copies();
    bool write_copy(PageSize larger, int number);

    /// Gives false, for the step to return.
    bool fail(const KIVString& reason)
    {
        if (failure.is_null())
            failure = reason;
        return false;
    }
    bool fail_to_write()
    {
        return fail(tiff.inq_error("not enough memory, or no room on the disc"));
    }

    KIVString image;
    KIVString path;
    AbortPanel* abort; // not owned
    KIVString failure; // to write
    PageSize size = {};
    UnfinishedFile file;
    GrowingTiff tiff;
    std::unique_ptr<TilePage> page;
};

bool TiledImage::begin(const PictureInfo& info)
{
    constexpr double LARGE = 3.0e9; // bytes of the picture; its copies add a third
    size = {info.width, info.height, info.bits};
    const double bytes = static_cast<double>(size.width) * size.height * size.bits / 2;
    if (!file.create(path))
        return fail(inq_system_error());
    if (!tiff.open(file.inq_handle(), bytes > LARGE))
        return fail_to_write();
    page = std::make_unique<TilePage>(tiff.inq_tiff(), size, abort);
    return page->begin(true, info) || fail_to_write();
}

bool TiledImage::write_full_size(KIVString& error)
{
    const auto begin_page = [this](const PictureInfo& info) {
        return begin(info) ? page.get() : nullptr;
    };
    if (!read_picture_rows(image, begin_page, error))
        return page && page->has_failed() ? fail_to_write() : false;
    return page->end() || fail_to_write();
}

bool TiledImage::write_copies()
{
    for (int number = 1; size.width > TILE_SIZE || size.height > TILE_SIZE; ++number)
        if (!write_copy(size, number))
            return false;
    return true;
}

/// From the page before it, as it lies in the file.
bool TiledImage::write_copy(PageSize larger, int number)
{
    struct stat state = {};
    if (::fstat(file.inq_handle().inq_descriptor(), &state) != 0)
        return fail(inq_system_error());
    const auto reader = make_tiff_page_reader(file.inq_handle(),
                                              static_cast<std::size_t>(state.st_size), number - 1);
    size = {half_of(larger.width), half_of(larger.height), larger.bits};
    page = std::make_unique<TilePage>(tiff.inq_tiff(), size, abort);
    HalvedRows rows(larger, *page);
    PictureInfo info;
    if (!page->begin(false, info))
        return fail_to_write();
    if (!reader->read_head(info) || !reader->read_pixels(rows))
        return page->has_failed() ? fail_to_write() : fail(reader->inq_error());
    return page->end() || fail_to_write();
}

bool TiledImage::make(KIVString& error)
{
    bool is_whole = write_full_size(error) && write_copies();
    tiff.close();
    is_whole = is_whole && ((file.close() && file.finish()) || fail(inq_system_error()));
    if (!failure.is_null())
        error = "Can't write image " + path + ": " + failure;
    return is_whole;
}
} // namespace

bool make_tiled_image(const KIVString& image, const KIVString& tiled_image, KIVString& error,
                      AbortPanel* abort)
{
    try {
        return TiledImage(image, tiled_image, abort).make(error);
    } catch (const std::bad_alloc&) {
        error = "Can't write image " + tiled_image + ": " + WANT_OF_MEMORY;
        return false;
    }
}
