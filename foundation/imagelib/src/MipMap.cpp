#include "imagelib/hdr/MipMap.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/CopyMaker.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/units.h"

#include <new>

namespace {
const KIVString NO_MEMORY = KIVString("Can't read image: ") + WANT_OF_MEMORY;
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
    levels[0] = std::move(taken);
}

gsl::owner<KIVPixmap*> MipMap::new_region_pixmap(Vector2* /*corners*/, int /*width*/,
                                                 int /*height*/)
{
    return nullptr;
}

gsl::owner<KIVPixmap*> MipMap::load_copy(std::size_t /*level*/, RowFollower& /*follower*/,
                                         KIVString& /*error*/, bool& /*may_pass*/)
{
    return nullptr;
}

void MipMap::set_size(int new_width, int new_height, double new_x_dpi, double new_y_dpi)
{
    set_sizes({{new_width, new_height}}, new_x_dpi, new_y_dpi);
}

void MipMap::set_sizes(const std::vector<CopySize>& stored, double new_x_dpi, double new_y_dpi)
{
    usable = false;
    sizes = stored;
    stored_count = stored.size();
    while (sizes.back().width > 1 || sizes.back().height > 1)
        sizes.push_back({half_of(sizes.back().width), half_of(sizes.back().height)});
    levels.clear();
    levels.resize(sizes.size());
    width = stored[0].width;
    height = stored[0].height;
    x_dpi = new_x_dpi;
    y_dpi = new_y_dpi;
    error = KIVString();
    has_lacked_memory = false;
    may_be_usable_later = false;
    usable = true;
}

void MipMap::set_unusable(const KIVString& reason, bool may_pass)
{
    width = 0;
    height = 0;
    usable = false;
    error = reason;
    has_lacked_memory = false;
    may_be_usable_later = may_pass;
}

void MipMap::set_without_memory()
{
    width = 0;
    height = 0;
    usable = false;
    has_lacked_memory = true;
    may_be_usable_later = true;
}

const KIVString& MipMap::inq_error_msg() const
{
    return has_lacked_memory ? NO_MEMORY : error;
}

void MipMap::forget_copies()
{
    for (auto& level : levels)
        level.reset();
}

std::size_t MipMap::inq_bytes() const
{
    std::size_t bytes = 0;
    for (const auto& level : levels)
        bytes += level ? level->inq_bytes() : 0;
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
    return inq_level(std::max(find_level(wanted_width, wanted_height), inq_first_level()));
}

std::size_t MipMap::find_level(int wanted_width, int wanted_height) const
{
    std::size_t level = 0;
    while (level + 1 < sizes.size() && sizes[level + 1].width >= wanted_width &&
           sizes[level + 1].height >= wanted_height)
        ++level;
    return level;
}

KIVPixmap* MipMap::inq_level(std::size_t level)
{
    if (levels[level])
        return levels[level].get();
    std::size_t next = level; // from the next larger copy that is there, or is in the file
    while (next >= stored_count && !levels[next])
        --next;
    try {
        CopyMaker copies(level - next);
        if (levels[next] || load_level(next, copies)) {
            KIVPixmap& picture = *levels[next++];
            for (auto& copy : copies.finish(picture))
                levels[next++] = std::move(copy);
        }
    } catch (const std::bad_alloc&) {
        // what is there will do
    }
    note_growth(); // which drops them again if nobody has locked the picture
    return next > 0 ? levels[next - 1].get() : nullptr;
}

bool MipMap::load_level(std::size_t level, CopyMaker& copies)
{
    try {
        levels[level].reset(load_copy(level, copies, error, may_be_usable_later));
    } catch (const std::bad_alloc&) {
        has_lacked_memory = true;
        may_be_usable_later = true;
    }
    usable = levels[level] != nullptr; // reading it again at once would end the same
    return usable;
}
