#include "imagelib/src/PixmapDrawing.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/DrawList.h"

namespace {
constexpr std::size_t MOST_DEPTH = 4; // of pictures within pictures
}

FixedPixels PixmapDrawing::inq_pixels(const KIVPixmap& source)
{
    const SourcePixels pixels = {source.inq_data(), static_cast<int>(source.row_bytes),
                                 source.width, source.height};
    if (is_fixed(source))
        return {source.pixels, source.blocks, pixels, source.inq_bytes()};
    return {nullptr, nullptr, pixels, 0};
}

bool PixmapDrawing::is_fixed(const KIVPixmap& source)
{
    return source.blocks != nullptr;
}

Canvas PixmapDrawing::inq_canvas(KIVPixmap& pixmap)
{
    return {pixmap.inq_data(), pixmap.row_bytes, pixmap.type, pixmap.inq_bytes_per_pixel()};
}

Tile PixmapDrawing::inq_area(const KIVPixmap& pixmap)
{
    return {{0, pixmap.width}, {0, pixmap.height}};
}

void PixmapDrawing::draw(KIVPixmap& target, std::unique_ptr<Layer> layer, Time time)
{
    target.prepare_change();
    if (!target.pixels)
        return;
    if (time == Time::NOW || (target.waiting && target.waiting->is_full()))
        target.draw_what_waits();
    if (!target.waiting)
        target.waiting = std::make_unique<DrawList>(DrawList::Beginning::OVER_WHAT_IS_THERE);
    target.waiting->add(std::move(layer));
    if (time == Time::NOW)
        target.draw_what_waits();
}

std::unique_ptr<DrawList> PixmapDrawing::take_picture(KIVPixmap& pixmap, const KIVPixmap& target)
{
    if (!pixmap.waiting || !pixmap.waiting->is_complete() || !pixmap.inq_alpha() ||
        pixmap.inq_bits_per_sample() != target.inq_bits_per_sample() ||
        pixmap.waiting->inq_depth() >= MOST_DEPTH)
        return nullptr;
    return std::move(pixmap.waiting);
}
