#pragma once

#include "imagelib/src/Layer.h"

#include <unordered_set>
#include <vector>

class AbortPanel;

/// The layers that a picture has been given and that nobody has looked at yet, the lowest first.
/// They are drawn tile by tile, since a tile stays in the cache from layer to layer, and since
/// nothing need be drawn under what is opaque. The result is that of drawing one after the other.
class DrawList {
public:
    /// A list that begins with a fill tells all pixels of its picture.
    enum class Beginning { CLEAR, WITH_A_COLOUR, OVER_WHAT_IS_THERE };

    explicit DrawList(Beginning beginning) : beginning(beginning) {}
    DrawList(const DrawList&) = delete;
    DrawList& operator=(const DrawList&) = delete;
    ~DrawList();

    void add(std::unique_ptr<Layer> layer);

    bool is_complete() const { return beginning != Beginning::OVER_WHAT_IS_THERE; }

    /// Whether there is nothing to be seen yet in the picture.
    bool is_clear() const { return beginning == Beginning::CLEAR && items.size() <= 1; }

    std::vector<std::unique_ptr<Layer>> take_layers();

    /// Whether there are so many layers, or all that wait anywhere hold on to so much, that these
    /// should be drawn before another comes.
    bool is_full() const;

    /// Draws all on the pixels of a picture. False if the panel stopped it: some of the pixels are
    /// then undefined.
    bool play(const Canvas& picture, int width, int height, AbortPanel* abort);

private:
    struct Item {
        std::unique_ptr<Layer> layer;
        Blocks chosen; // of the tile that was looked at
    };

    void play_tile(const Canvas& picture, const Tile& tile, Scratch& scratch);
    Blocks look_at(const Tile& tile, Blocks& open);
    void draw(const Canvas& canvas, const Tile& tile, Scratch& scratch);
    const Item* find_next(std::size_t from) const;
    void unpin();
    Tile inq_box() const;

    const Beginning beginning;
    std::vector<Item> items;
    std::unordered_set<const void*> pinned;
    std::size_t pinned_bytes = 0;
};
