#include "imagelib/hdr/MipMap.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "imagelib/src/reduce.h"
#include "kivlib/hdr/KIVStringList.h"

namespace {
constexpr double UNITS_PER_INCH = 60.0;

double to_units(int pixels, double dpi)
{
    return dpi > 0.0 ? pixels * UNITS_PER_INCH / dpi : pixels;
}

int half_of(int size)
{
    return std::max(1, size / 2);
}
} // namespace

MipMap::MipMap() = default;
MipMap::~MipMap() = default;

MipMap::MipMap(gsl::owner<KIVPixmap*> picture)
{
    std::unique_ptr<KIVPixmap> taken(picture);
    if (!taken || !taken->inq_data() || !taken->convert(4, taken->inq_bits_per_sample()))
        return;
    set_size(taken->inq_width(), taken->inq_height(), taken->inq_x_dpi(), taken->inq_y_dpi());
    taken->fix_pixels();
    levels.push_back(std::move(taken));
}

gsl::owner<KIVPixmap*> MipMap::new_region_pixmap(Vector2* /*corners*/, int /*width*/,
                                                 int /*height*/)
{
    return nullptr;
}

gsl::owner<KIVPixmap*> MipMap::load_picture(KIVString& /*error*/)
{
    return nullptr;
}

void MipMap::set_size(int new_width, int new_height, double new_x_dpi, double new_y_dpi)
{
    width = new_width;
    height = new_height;
    x_dpi = new_x_dpi;
    y_dpi = new_y_dpi;
    usable = true;
    error = KIVString();
}

void MipMap::set_unusable(const KIVString& reason)
{
    width = 0;
    height = 0;
    usable = false;
    error = reason;
}

void MipMap::drop_pixels()
{
    levels.clear();
}

std::size_t MipMap::inq_bytes() const
{
    std::size_t bytes = 0;
    for (const auto& level : levels)
        bytes += level->inq_bytes();
    return bytes;
}

KIVRectangle MipMap::get_frame() const
{
    return {Vector2(), to_units(width, x_dpi), to_units(height, y_dpi)};
}

KIVPixmap* MipMap::inq_pixmap(int wanted_width, int wanted_height)
{
    if (!usable)
        return nullptr;
    std::size_t level = 0;
    int level_width = width;
    int level_height = height;
    while ((level_width > 1 || level_height > 1) && half_of(level_width) >= wanted_width &&
           half_of(level_height) >= wanted_height) {
        level_width = half_of(level_width);
        level_height = half_of(level_height);
        ++level;
    }
    return inq_level(level);
}

KIVPixmap* MipMap::inq_level(std::size_t level)
{
    const std::size_t before = levels.size();
    while (levels.size() <= level && make_level(levels.size())) {
    }
    if (levels.size() != before)
        note_growth(); // which drops them again if nobody has locked the picture
    return levels.empty() ? nullptr : levels[std::min(level, levels.size() - 1)].get();
}

bool MipMap::make_level(std::size_t level)
{
    std::unique_ptr<KIVPixmap> made(
        level == 0 ? load_picture(error) : make_reduced(*levels[level - 1], true, true).release());
    if (!made) {
        usable = usable && level > 0; // to read it again would end the same
        return false;
    }
    made->fix_pixels();
    levels.push_back(std::move(made));
    return true;
}

KIVStringSet TiledMipMap::inq_tiled_extensions()
{
    return {}; // no tiled format can be read yet
}
