#include "imagelib/src/DrawList.h"

#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/AbortPanel.h"

namespace {
constexpr std::size_t MOST_LAYERS = 1024;

/// Bytes that layers everywhere keep for their drawing.
std::size_t all_pinned_bytes = 0;

int tile_begin(int place, int size)
{
    return place / size * size;
}

void convert_blocks(const Canvas& to, const Canvas& from, const Tile& tile, Blocks chosen)
{
    for_each_run(tile, chosen, [&](const Tile& run) {
        for (int y = run.lines.begin; y < run.lines.end; ++y)
            convert_pixels(to.at(run.columns.begin, y), to.type, from.at(run.columns.begin, y),
                           from.type, run.columns.size());
    });
}
} // namespace

Canvas Scratch::inq_canvas(const Tile& tile, PixType type)
{
    if (!aside)
        aside.reset(new TileOfPixels);
    const int bytes = inq_bytes_per_pixel(type);
    return {aside->bytes,
            static_cast<std::size_t>(TILE_WIDTH * bytes),
            type,
            bytes,
            tile.columns.begin,
            tile.lines.begin};
}

void DrawList::add(std::unique_ptr<Layer> layer)
{
    if (layer->inq_pinned() && pinned.insert(layer->inq_pinned()).second) {
        pinned_bytes += layer->inq_pinned_bytes();
        all_pinned_bytes += layer->inq_pinned_bytes();
    }
    items.push_back({std::move(layer), 0});
}

bool DrawList::is_full() const
{
    return items.size() >= MOST_LAYERS || all_pinned_bytes >= BitmapProvider::inq_cache_limit();
}

void DrawList::unpin()
{
    all_pinned_bytes -= pinned_bytes;
    pinned_bytes = 0;
    pinned.clear();
}

DrawList::~DrawList()
{
    unpin();
}

std::vector<std::unique_ptr<Layer>> DrawList::take_layers()
{
    std::vector<std::unique_ptr<Layer>> layers;
    layers.reserve(items.size());
    for (Item& item : items)
        layers.push_back(std::move(item.layer));
    items.clear();
    unpin();
    return layers;
}

Tile DrawList::inq_box() const
{
    Tile box = {{0, 0}, {0, 0}};
    for (const Item& item : items) {
        const Tile other = {item.layer->inq_columns(), item.layer->inq_lines()};
        if (other.inq_is_empty())
            continue;
        const bool is_first = box.inq_is_empty();
        const auto join = [&](Interval& a, const Interval& b) {
            a = is_first ? b : Interval{std::min(a.begin, b.begin), std::max(a.end, b.end)};
        };
        join(box.columns, other.columns);
        join(box.lines, other.lines);
    }
    return box;
}

bool DrawList::play(const Canvas& picture, int width, int height, AbortPanel* abort)
{
    const Tile box = inq_box();
    Scratch scratch;
    for (int y = tile_begin(box.lines.begin, TILE_HEIGHT); y < box.lines.end; y += TILE_HEIGHT) {
        if (abort && abort->inq_abort())
            return false;
        const Interval lines = {y, std::min(y + TILE_HEIGHT, height)};
        for (int x = tile_begin(box.columns.begin, TILE_WIDTH); x < box.columns.end;
             x += TILE_WIDTH)
            play_tile(picture, {{x, std::min(x + TILE_WIDTH, width)}, lines}, scratch);
    }
    return true;
}

/// From the top, until every block is hidden: which blocks are drawn, and through which of the
/// tile's, the open ones, one sees what was there before.
Blocks DrawList::look_at(const Tile& tile, Blocks& open)
{
    Blocks drawn = 0;
    open = inq_blocks(tile);
    for (auto item = items.rbegin(); item != items.rend(); ++item) {
        item->chosen = 0;
        if (open == 0 || !item->layer->meets(tile))
            continue;
        const Layer::Effect effect = item->layer->look_at(tile);
        item->chosen = effect.drawn & open;
        drawn |= item->chosen;
        open &= ~effect.replaced;
    }
    return drawn;
}

/// Layers are drawn with alpha: in a picture without, they are drawn aside.
void DrawList::play_tile(const Canvas& picture, const Tile& tile, Scratch& scratch)
{
    Blocks open = 0;
    const Blocks drawn = look_at(tile, open);
    if (drawn == 0)
        return;
    if (has_alpha(picture.type))
        return draw(picture, tile, scratch);
    const Canvas aside = scratch.inq_canvas(tile, make_pix_type(4, inq_bits(picture.type)));
    convert_blocks(aside, picture, tile, drawn & open);
    draw(aside, tile, scratch);
    convert_blocks(picture, aside, tile, drawn);
}

const DrawList::Item* DrawList::find_next(std::size_t from) const
{
    for (; from < items.size(); ++from)
        if (items[from].chosen != 0)
            return &items[from];
    return nullptr;
}

void DrawList::draw(const Canvas& canvas, const Tile& tile, Scratch& scratch)
{
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i].chosen == 0)
            continue;
        if (const Item* next = find_next(i + 1))
            next->layer->prefetch(tile, next->chosen);
        items[i].layer->draw(canvas, tile, items[i].chosen, scratch);
    }
}
