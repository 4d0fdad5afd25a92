#include "imagelib/src/PyramidFile.h"

#include "imagelib/hdr/KIVPixmap.h"

#include <cerrno>
#include <sys/stat.h>

namespace {
using Levels = std::vector<PyramidFile::Level>;

bool has_usable_tiles(const TiffPage& page)
{
    return page.is_tiled && page.is_plain && !page.is_in_planes && !page.is_negative &&
           page.orientation == ORIENTATION_TOPLEFT && page.width > 0 && page.height > 0 &&
           page.is_sane();
}

/// Whether a page shows all of the picture, at a smaller size. Odd sides are rounded either way.
bool is_smaller_copy(const TiffPage& page, const TiffPage& picture)
{
    constexpr double ROUNDING = 2.0;
    const double scale = static_cast<double>(page.width) / picture.width;
    return page.width < picture.width && page.height <= picture.height &&
           std::abs(page.height - scale * picture.height) <= ROUNDING;
}

void add_page(TIFF* tiff, Levels& levels)
{
    const TiffPage page = TiffPage::look(tiff);
    if (has_usable_tiles(page) && (levels.empty() || is_smaller_copy(page, levels[0].page)))
        levels.push_back({page, TIFFCurrentDirOffset(tiff)});
}

/// Those that hang on the first page.
void add_sub_pages(TIFF* tiff, Levels& levels)
{
    std::uint16_t count = 0;
    const std::uint64_t* told = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_SUBIFD, &count, &told))
        return;
    const std::vector<std::uint64_t> offsets(told, told + count); // the field goes with the page
    for (const std::uint64_t offset : offsets)
        if (TIFFSetSubDirectory(tiff, offset))
            add_page(tiff, levels);
    TIFFSetSubDirectory(tiff, levels[0].offset);
}

Levels find_levels(TIFF* tiff)
{
    constexpr int MOST_PAGES = 64;
    Levels levels;
    add_page(tiff, levels);
    if (levels.empty())
        return levels;
    add_sub_pages(tiff, levels);
    for (int i = 0; i < MOST_PAGES && TIFFReadDirectory(tiff); ++i)
        if (get_tiff_field<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE) & FILETYPE_REDUCEDIMAGE)
            add_page(tiff, levels);
    const auto width = [](const PyramidFile::Level& level) { return level.page.width; };
    std::ranges::stable_sort(levels, std::greater<>(), width);
    const auto same = std::ranges::unique(levels, std::equal_to<>(), width);
    levels.erase(same.begin(), same.end());
    return levels;
}
} // namespace

std::unique_ptr<PyramidFile> PyramidFile::open(const KIVString& path, KIVString& error)
{
    std::unique_ptr<PyramidFile> pyramid(new PyramidFile(path));
    if (!pyramid->open_file())
        return nullptr;
    pyramid->levels = find_levels(pyramid->tiff);
    if (pyramid->stream->has_ended_early())
        error = "Can't read image " + path + ": the TIFF file ends too early";
    pyramid->close();
    const bool has_copies = pyramid->levels.size() > 1;
    return has_copies && error.is_null() ? std::move(pyramid) : nullptr;
}

void PyramidFile::close()
{
    tiff = nullptr;
    stream.reset();
    file.close();
}

bool PyramidFile::open_file()
{
    file = FileHandle::open_to_read(path.c_str());
    struct stat state = {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &state) != 0)
        return false;
    stream = std::make_unique<TiffStream>(file, static_cast<std::size_t>(state.st_size),
                                          LARGEST_TIFF_BLOCK);
    tiff = stream->open_to_read();
    return tiff != nullptr;
}

/// The file may have become another one meanwhile.
bool PyramidFile::is_ready(KIVString& error)
{
    if (tiff)
        return true;
    if (open_file() && find_levels(tiff) == levels) {
        current = levels.size();
        return true;
    }
    close();
    error = "Can't read image " + path + ": it has changed since it was looked at";
    return false;
}

bool PyramidFile::stand_at(std::size_t level)
{
    if (level != current && !TIFFSetSubDirectory(tiff, levels[level].offset))
        return false;
    current = level;
    return true;
}

bool PyramidFile::read_tile(std::size_t level, int column, int row, KIVPixmap& to, int x, int y,
                            KIVString& error)
{
    errno = 0;
    if (!is_ready(error))
        return false;
    const TiffPage& page = levels[level].page;
    const int columns = std::min(page.block_width, to.inq_width() - x);
    const int rows = std::min(page.block_height, to.inq_height() - y);
    const auto bytes = static_cast<tmsize_t>(page.inq_block_bytes());
    block.resize(page.inq_block_bytes());
    const std::uint32_t tile =
        stand_at(level)
            ? TIFFComputeTile(tiff, static_cast<std::uint32_t>(column * page.block_width),
                              static_cast<std::uint32_t>(row * page.block_height), 0, 0)
            : 0;
    if (current != level || TIFFReadEncodedTile(tiff, tile, block.data(), bytes) != bytes) {
        error = "Can't read image " + path + ": the TIFF file ends too early, or is damaged";
        return false;
    }
    const std::size_t row_bytes =
        page.layout.inq_bytes() * static_cast<std::size_t>(page.block_width);
    for (int i = 0; i < rows; ++i)
        put_pixels(to, x, y + i, block.data() + static_cast<std::size_t>(i) * row_bytes, columns,
                   page.layout);
    return true;
}
