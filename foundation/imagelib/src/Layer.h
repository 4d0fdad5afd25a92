#pragma once

#include "imagelib/src/AlignedMemory.h"
#include "imagelib/src/Tile.h"
#include "imagelib/src/kernels.h"

#include <cstddef>
#include <memory>
#include <tuple>

/// Room for a strip of pixels on their way to a tile.
template <class Sample> struct Strips : InAlignedMemory {
    static constexpr int MOST_MIXED = 2 * TILE_WIDTH + 64; // pixels of rows mixed for a strip
    static constexpr int SAMPLES = 4;

    Strips() { std::fill(std::begin(mixed), std::end(mixed), Mixed<Sample>{}); }

    /// Taps without a share may look beyond what is mixed.
    alignas(PIXEL_ALIGNMENT) Mixed<Sample> mixed[4 * MOST_MIXED];
    alignas(PIXEL_ALIGNMENT) Sample strip[4 * TILE_WIDTH];
    alignas(PIXEL_ALIGNMENT) Sample samples_of[SAMPLES][4 * TILE_WIDTH];
};

/// What one playing of layers works in; all of them share it.
class Scratch {
public:
    template <class Sample> Strips<Sample>& inq_strips()
    {
        auto& strips = std::get<std::unique_ptr<Strips<Sample>>>(both);
        if (!strips)
            strips.reset(new Strips<Sample>);
        return *strips;
    }

    /// Undefined pixels for a tile that is drawn aside, one at a time. What is opaque is drawn over
    /// them with a share of 0 for what was there, which a tool that looks for undefined values
    /// takes for a fault.
    Canvas inq_canvas(const Tile& tile, PixType type);

private:
    struct alignas(PIXEL_ALIGNMENT) TileOfPixels : InAlignedMemory {
        unsigned char bytes[TILE_WIDTH * TILE_HEIGHT * 8];
    };

    std::tuple<std::unique_ptr<Strips<std::uint8_t>>, std::unique_ptr<Strips<std::uint16_t>>> both;
    std::unique_ptr<TileOfPixels> aside;
};

/// Something that is drawn over a picture, tile by tile.
class Layer {
public:
    /// What a layer does to the blocks of a tile.
    struct Effect {
        Blocks drawn = 0;    // it has to be drawn there
        Blocks replaced = 0; // nothing of what lies below is seen there any more
    };

    Layer(Interval columns, Interval lines) : columns(columns), lines(lines) {}
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;
    virtual ~Layer() = default;

    /// The box outside of which nothing changes.
    const Interval& inq_columns() const { return columns; }
    const Interval& inq_lines() const { return lines; }
    bool inq_is_empty() const { return columns.size() == 0 || lines.size() == 0; }
    bool is_around(const Tile& part) const { return part.is_inside(columns, lines); }
    bool meets(const Tile& tile) const
    {
        return columns.begin < tile.columns.end && columns.end > tile.columns.begin &&
               lines.begin < tile.lines.end && lines.end > tile.lines.begin;
    }

    /// Goes over another picture with all that its own has, whose top left pixel comes to (x, y)
    /// there. What comes to lie outside of `area` is cut off.
    void go_onto(const Tile& area, int x, int y);

    /// Comes before the drawing of a tile.
    virtual Effect look_at(const Tile& tile) = 0;

    /// Draws some blocks of a tile on a canvas with alpha, of the layer's depth.
    virtual void draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch) = 0;

    /// Brings near what the blocks will want.
    virtual void prefetch(const Tile& /*tile*/, Blocks /*chosen*/) const {}

    /// The pixels of its source, and how many bytes they are; null if the layer does not keep them.
    virtual const void* inq_pinned() const { return nullptr; }
    virtual std::size_t inq_pinned_bytes() const { return 0; }

protected:
    virtual void move(int x, int y) = 0;

    Interval columns;
    Interval lines;
};
