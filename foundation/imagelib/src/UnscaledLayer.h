#pragma once

#include "imagelib/src/FixedPixels.h"
#include "imagelib/src/Layer.h"

/// A picture at whole pixels.
class UnscaledLayer : public Layer {
public:
    /// Draws the source with its top left pixel at (x, y), inside of `target`. The source has the
    /// canvas's depth, with alpha, or else is of `type`.
    UnscaledLayer(const FixedPixels& source, PixType type, long x, long y, unsigned share,
                  const Tile& target);

    Effect look_at(const Tile& tile) override;
    void draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch) override;

    const void* inq_pinned() const override { return source.memory.get(); }
    std::size_t inq_pinned_bytes() const override { return source.bytes; }

private:
    void move(int x, int y) override;
    template <class Sample>
    void draw_row(const Canvas& canvas, Interval run, int y, Scratch& scratch) const;
    const unsigned char* at(int column, int line) const;
    Interval columns_of(const Tile& part) const;
    Interval lines_of(const Tile& part) const;

    const FixedPixels source;
    const PixType type;
    long x;
    long y;
    const unsigned share;
};
