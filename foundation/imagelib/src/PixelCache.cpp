#include "imagelib/src/PixelCache.h"

PixelCache& inq_pixel_cache()
{
    static auto* cache = new PixelCache; // outlives every provider
    return *cache;
}

PixelCache::Item::~Item()
{
    inq_pixel_cache().forget(*this);
}

void PixelCache::note_use(Item& item)
{
    const std::size_t bytes = item.inq_bytes();
    if (bytes == 0)
        return forget(item);
    items.splice(items.begin(), item.counted_bytes == 0 ? item.own_place : items, item.place);
    total += bytes - item.counted_bytes;
    item.counted_bytes = bytes;
    drop_excess();
}

void PixelCache::forget(Item& item)
{
    if (item.counted_bytes == 0)
        return;
    total -= item.counted_bytes;
    item.counted_bytes = 0;
    item.own_place.splice(item.own_place.begin(), items, item.place);
}

void PixelCache::set_limit(std::size_t bytes)
{
    limit = bytes;
    drop_excess();
}

void PixelCache::drop_excess()
{
    for (auto place = items.end(); place != items.begin() && total > limit;) {
        Item* item = *--place;
        if (item->is_in_use())
            continue;
        ++place;
        item->drop();
    }
}
