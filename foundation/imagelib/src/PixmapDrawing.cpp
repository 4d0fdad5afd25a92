#include "imagelib/src/PixmapDrawing.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/DrawList.h"
#include "imagelib/src/composite.h"

#include <new>

FixedPixels PixmapDrawing::inq_pixels(const KIVPixmap& source)
{
    const SourcePixels pixels = {source.inq_data(), static_cast<int>(source.row_bytes),
                                 source.width, source.height};
    if (source.inq_is_fixed())
        return {source.pixels, source.blocks, pixels, source.inq_bytes()};
    return {nullptr, nullptr, pixels, 0};
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
    if (!target.pixels)
        return;
    target.prepare_change();
    if (!target.pixels)
        throw std::bad_alloc(); // the pixels are gone: a picture without them would look finished
    if (time == Time::NOW || (target.waiting && target.waiting->is_full()))
        target.draw_what_waits();
    if (!target.waiting)
        target.waiting = std::make_unique<DrawList>(DrawList::Beginning::OVER_WHAT_IS_THERE);
    target.waiting->add(std::move(layer));
    if (time == Time::NOW)
        target.draw_what_waits();
}

void PixmapDrawing::hand_over(KIVPixmap& target, KIVPixmap& picture, int x, int y)
{
    const std::unique_ptr<DrawList> list = std::move(picture.waiting);
    if (!list || !list->is_complete()) {
        picture.fix_pixels();
        composite_unscaled(target, picture, x, y, {false});
    }
    if (!list)
        return;
    for (std::unique_ptr<Layer>& layer : list->take_layers()) {
        layer->go_onto(inq_area(target), x, y);
        if (!layer->inq_is_empty())
            draw(target, std::move(layer), Time::LATER);
    }
}

bool PixmapDrawing::is_clear(const KIVPixmap& pixmap)
{
    return pixmap.waiting && pixmap.waiting->is_clear();
}
