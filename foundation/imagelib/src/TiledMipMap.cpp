#include "imagelib/hdr/TiledMipMap.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/src/AlignedMemory.h"
#include "imagelib/src/PixelCache.h"
#include "imagelib/src/PyramidFile.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/KIVStringList.h"

/// A tile as it is in memory, without what juts out of the picture.
class TiledMipMap::Tile : public PixelCache::Item {
public:
    Tile(TiledMipMap& picture, std::uint64_t place, const KIVPixmap& pixels);

    bool is_empty() const { return !memory; }

    /// Puts it where its top left pixel comes to (x, y); what lies outside is cut off.
    void put_into(KIVPixmap& region, int x, int y) const;

    std::size_t inq_bytes() const override { return row_bytes * static_cast<std::size_t>(height); }
    void drop() override
    {
        const std::uint64_t own_place = place; // this tile ends before the call does
        picture.tiles.erase(own_place);
    }

private:
    TiledMipMap& picture;
    std::uint64_t place;
    int width;
    int height;
    std::size_t row_bytes;
    const std::unique_ptr<unsigned char, void (*)(void*)> memory;
};

TiledMipMap::Tile::Tile(TiledMipMap& picture, std::uint64_t place, const KIVPixmap& pixels)
    : picture(picture), place(place), width(pixels.inq_width()), height(pixels.inq_height()),
      row_bytes(static_cast<std::size_t>(width * pixels.inq_bytes_per_pixel())),
      memory(static_cast<unsigned char*>(
                 new_aligned(row_bytes * static_cast<std::size_t>(height), std::nothrow)),
             delete_aligned)
{
    for (int y = 0; !is_empty() && y < height; ++y)
        std::memcpy(memory.get() + static_cast<std::size_t>(y) * row_bytes, pixels.inq_row(y),
                    row_bytes);
}

void TiledMipMap::Tile::put_into(KIVPixmap& region, int x, int y) const
{
    const auto pixel_bytes = static_cast<std::size_t>(region.inq_bytes_per_pixel());
    const int left = std::max(0, -x);
    const int columns = std::min(width, region.inq_width() - x) - left;
    const int bottom = std::min(height, region.inq_height() - y);
    for (int row = std::max(0, -y); columns > 0 && row < bottom; ++row)
        std::memcpy(region.inq_row(y + row) + static_cast<std::size_t>(x + left) * pixel_bytes,
                    memory.get() + static_cast<std::size_t>(row) * row_bytes +
                        static_cast<std::size_t>(left) * pixel_bytes,
                    static_cast<std::size_t>(columns) * pixel_bytes);
}

namespace {
/// Closes a file that tiles are read from, whatever happens meanwhile.
class FileUse {
public:
    explicit FileUse(PyramidFile& file) : file(file) {}
    FileUse(const FileUse&) = delete;
    FileUse& operator=(const FileUse&) = delete;
    ~FileUse() { file.close(); }

private:
    PyramidFile& file;
};

/// Pixels of one side of a copy, counted from the left or from the top.
struct Span {
    int first = 0;
    int end = 0;

    int inq_size() const { return end - first; }
};

/// Regions begin and end at a multiple of this, so that their halving, until a side has fewer than
/// twice the `shown` pixels, falls on the same pixels wherever the region lies. A side that is
/// odd on the way is taken whole: how it is parted depends on its length.
int find_step(int size, int shown)
{
    int step = 1;
    for (int left = size; shown <= left / 2; left /= 2, step *= 2)
        if (left % 2 != 0)
            return size;
    return step;
}

/// What filters need around the shares `from` and `to` of a side that is shown at `shown` pixels.
/// There is always something, even of a picture out of view.
Span find_span(double from, double to, int size, int shown)
{
    constexpr double PIXELS_AROUND = 2.0; // of the copy, and of what is shown
    const double margin = PIXELS_AROUND + PIXELS_AROUND * size / static_cast<double>(shown);
    const int first = static_cast<int>(std::clamp(from * size - margin, 0.0, size - 1.0));
    const int end = static_cast<int>(std::clamp(to * size + margin, first + 1.0, size * 1.0));
    const int step = find_step(size, shown);
    return {first / step * step, std::min(size, (end / step + 1) * step)};
}

std::uint64_t make_place(std::size_t level, int column, int row)
{
    constexpr int BITS = 24;
    return (level << BITS | static_cast<std::uint64_t>(row)) << BITS |
           static_cast<std::uint64_t>(column);
}
} // namespace

/// A part of one of the copies.
struct TiledMipMap::Area {
    std::size_t level = 0;
    Span columns;
    Span rows;

    std::size_t inq_bytes(int bits) const
    {
        return static_cast<std::size_t>(columns.inq_size()) *
               static_cast<std::size_t>(rows.inq_size()) * static_cast<std::size_t>(bits / 2);
    }
};

TiledMipMap::TiledMipMap(std::unique_ptr<PyramidFile> pyramid, const PictureInfo& info, int bits,
                         Change change, std::function<void()> note_growth)
    : file(std::move(pyramid)), bits(bits), change(std::move(change)),
      tell_growth(std::move(note_growth))
{
    std::vector<CopySize> sizes;
    for (const PyramidFile::Level& level : file->inq_levels())
        sizes.push_back({level.page.width, level.page.height});
    set_sizes(sizes, info.x_dpi, info.y_dpi);
}

TiledMipMap::~TiledMipMap() = default;

KIVStringSet TiledMipMap::inq_tiled_extensions()
{
    KIVStringSet extensions("tif");
    extensions.add("tiff");
    return extensions;
}

/// Never more at once than the limit of all pictures.
std::size_t TiledMipMap::inq_first_level() const
{
    const auto& levels = file->inq_levels();
    std::size_t level = 0;
    const auto bytes = [&] {
        const TiffPage& page = levels[level].page;
        return Area{level, {0, page.width}, {0, page.height}}.inq_bytes(bits);
    };
    while (level + 1 < levels.size() && bytes() > inq_pixel_cache().inq_limit())
        ++level;
    return level;
}

gsl::owner<KIVPixmap*> TiledMipMap::load_copy(std::size_t level, RowFollower& /*follower*/,
                                              KIVString& error, bool& may_pass)
{
    const FileUse use(*file);
    return make_copy(level, error, may_pass).release();
}

/// The tiles are put into the copy without being kept themselves.
std::unique_ptr<KIVPixmap> TiledMipMap::make_copy(std::size_t level, KIVString& error,
                                                  bool& may_pass)
{
    const TiffPage& page = file->inq_levels()[level].page;
    auto copy = std::make_unique<KIVPixmap>(page.width, page.height, 4, bits, nullptr, false);
    if (copy->inq_is_empty())
        throw std::bad_alloc();
    bool is_okay = true;
    for (int y = 0; is_okay && y < page.height; y += page.block_height)
        for (int x = 0; is_okay && x < page.width; x += page.block_width)
            is_okay = file->read_tile(level, x / page.block_width, y / page.block_height, *copy, x,
                                      y, error);
    may_pass = !is_okay && has_failed_for_now();
    if (is_okay && change && !change(*copy))
        throw std::bad_alloc();
    return is_okay ? std::move(copy) : nullptr;
}

/// The best copy, or the best of which the part takes no more than the limit.
TiledMipMap::Area TiledMipMap::find_area(const Vector2* corners, int shown_width,
                                         int shown_height) const
{
    const auto across =
        std::ranges::minmax({corners[0].x(), corners[1].x(), corners[2].x(), corners[3].x()});
    const auto up =
        std::ranges::minmax({corners[0].y(), corners[1].y(), corners[2].y(), corners[3].y()});
    const auto& levels = file->inq_levels();
    Area area;
    for (std::size_t level = std::min(find_level(shown_width, shown_height), levels.size() - 1);
         level < levels.size(); ++level) {
        const TiffPage& page = levels[level].page;
        area = {level, find_span(across.min, across.max, page.width, std::max(1, shown_width)),
                find_span(1.0 - up.max, 1.0 - up.min, page.height, std::max(1, shown_height))};
        if (area.inq_bytes(bits) <= inq_pixel_cache().inq_limit())
            break;
    }
    return area;
}

gsl::owner<KIVPixmap*> TiledMipMap::new_region_pixmap(Vector2* corners, int shown_width,
                                                      int shown_height)
{
    const FileUse use(*file);
    try {
        return make_region(corners, shown_width, shown_height).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::unique_ptr<KIVPixmap> TiledMipMap::make_region(Vector2* corners, int shown_width,
                                                    int shown_height)
{
    const auto is_finite = [](const Vector2& point) {
        return std::isfinite(point.x()) && std::isfinite(point.y());
    };
    if (!usable || !std::all_of(corners, corners + 4, is_finite))
        return nullptr;
    const Area area = find_area(corners, shown_width, shown_height);
    auto region = std::make_unique<KIVPixmap>(area.columns.inq_size(), area.rows.inq_size(), 4,
                                              bits, nullptr, false);
    if (!region->inq_data() || !fill(*region, area))
        return nullptr;
    const TiffPage& page = file->inq_levels()[area.level].page;
    const double left = static_cast<double>(area.columns.first) / page.width;
    const double right = static_cast<double>(area.columns.end) / page.width;
    const double top = 1.0 - static_cast<double>(area.rows.first) / page.height;
    const double bottom = 1.0 - static_cast<double>(area.rows.end) / page.height;
    corners[0] = Vector2(left, top);
    corners[1] = Vector2(right, top);
    corners[2] = Vector2(right, bottom);
    corners[3] = Vector2(left, bottom);
    return region;
}

bool TiledMipMap::fill(KIVPixmap& region, const Area& area)
{
    const TiffPage& page = file->inq_levels()[area.level].page;
    KIVString error;
    bool may_pass = false;
    for (int row = area.rows.first / page.block_height; row * page.block_height < area.rows.end;
         ++row)
        for (int column = area.columns.first / page.block_width;
             column * page.block_width < area.columns.end; ++column) {
            Tile* tile = find_tile(area.level, column, row, error, may_pass);
            if (!tile) {
                set_unusable(error, may_pass); // reading it again at once would end the same
                return false;
            }
            tile->put_into(region, column * page.block_width - area.columns.first,
                           row * page.block_height - area.rows.first);
            inq_pixel_cache().note_use(*tile); // which may be its end
        }
    return true;
}

TiledMipMap::Tile* TiledMipMap::find_tile(std::size_t level, int column, int row, KIVString& error,
                                          bool& may_pass)
{
    const std::uint64_t place = make_place(level, column, row);
    const auto found = tiles.find(place);
    if (found != tiles.end())
        return found->second.get();
    const TiffPage& page = file->inq_levels()[level].page;
    KIVPixmap pixels(std::min(page.block_width, page.width - column * page.block_width),
                     std::min(page.block_height, page.height - row * page.block_height), 4, bits,
                     nullptr, false);
    if (pixels.inq_is_empty())
        throw std::bad_alloc();
    if (!file->read_tile(level, column, row, pixels, 0, 0, error)) {
        may_pass = has_failed_for_now();
        return nullptr;
    }
    const bool is_ready = !change || change(pixels);
    auto tile = std::make_unique<Tile>(*this, place, pixels);
    if (!is_ready || tile->is_empty())
        throw std::bad_alloc();
    return tiles.emplace(place, std::move(tile)).first->second.get();
}
