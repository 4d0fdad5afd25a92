#pragma once

#include "imagelib/src/Layer.h"

#include <unordered_set>

class AbortPanel;

/// The layers that a picture has been given and that nobody has looked at yet, the lowest first.
/// They are drawn tile by tile, since a tile stays in the cache from layer to layer, and since
/// nothing need be drawn under what is opaque. The result is that of drawing one after the other.
class DrawList {
public:
    /// A list that begins with a fill tells all pixels of its picture.
    enum class Beginning { WITH_A_FILL, OVER_WHAT_IS_THERE };

    explicit DrawList(Beginning beginning) : beginning(beginning) {}
    DrawList(const DrawList&) = delete;
    DrawList& operator=(const DrawList&) = delete;
    ~DrawList();

    void add(std::unique_ptr<Layer> layer);

    bool is_complete() const { return beginning == Beginning::WITH_A_FILL; }

    /// Whether there are so many layers, or all that wait anywhere hold on to so much, that these
    /// should be drawn before another comes.
    bool is_full() const;

    /// How many lists lie within one another here.
    std::size_t inq_depth() const { return depth; }

    /// Draws all on the pixels of a picture. False if the panel stopped it: some of the pixels are
    /// then undefined.
    bool play(const Canvas& picture, int width, int height, AbortPanel* abort);

    // The same for one tile, as a part of another picture: `look_at` comes first, and `draw_aside`
    // draws the tile of the last look, of which pixels outside the chosen blocks are undefined.
    Layer::Effect look_at(const Tile& tile);
    void prefetch_first(const Tile& tile, Blocks chosen) const;
    Canvas draw_aside(const Tile& tile, PixType type, Blocks chosen, Scratch& scratch);

private:
    struct Item {
        std::unique_ptr<Layer> layer;
        Blocks chosen; // of the tile that was looked at
    };

    void play_tile(const Canvas& picture, const Tile& tile, Scratch& scratch);
    void draw(const Canvas& canvas, const Tile& tile, Blocks wanted, Scratch& scratch);
    const Item* find_next(std::size_t from, Blocks wanted) const;
    Tile inq_box() const;

    const Beginning beginning;
    std::vector<Item> items;
    std::unordered_set<const void*> pinned;
    std::size_t pinned_bytes = 0;
    std::size_t depth = 1;
    Blocks open = 0; // blocks of the tile through which one sees what was there before
};

/// Draws premultiplied pixels of a type with alpha.
void put_over(unsigned char* target, const unsigned char* source, PixType type, int pixels);
