#pragma once

#include "imagelib/src/FixedPixels.h"
#include "imagelib/src/Layer.h"

class DrawList;

/// One colour all over, in the place of what was there.
class Fill : public Layer {
public:
    /// `pixel`: with alpha, of `bytes_per_pixel` bytes.
    Fill(int width, int height, const unsigned char* pixel, int bytes_per_pixel);

    Effect look_at(const Tile& tile) override;
    void draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch) override;

private:
    const int bytes_per_pixel;
    unsigned char row[TILE_WIDTH * 8];
    bool is_visible;
    bool is_opaque;
};

/// How a picture gets onto another.
enum class Manner { OVER, REPLACE };

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
    template <class Sample>
    void draw_row(const Canvas& canvas, Interval run, int y, Scratch& scratch) const;
    const unsigned char* at(int column, int line) const;
    Interval columns_of(const Tile& part) const;
    Interval lines_of(const Tile& part) const;

    const FixedPixels source;
    const PixType type;
    const long x;
    const long y;
    const unsigned share;
};

/// A picture that has not been drawn itself yet, at whole pixels.
class PictureLayer : public Layer {
public:
    /// Draws what `picture` draws, of `type` and with its top left pixel at (x, y), inside of
    /// `target`.
    PictureLayer(std::unique_ptr<DrawList> picture, PixType type, int width, int height, int x,
                 int y, Manner manner, const Tile& target);
    ~PictureLayer() override;

    Effect look_at(const Tile& tile) override;
    void draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch) override;
    void prefetch(const Tile& tile, Blocks chosen) const override;

    std::size_t inq_depth() const override;

private:
    Tile inside(const Tile& tile) const;

    const std::unique_ptr<DrawList> picture;
    const PixType type;
    const int x;
    const int y;
    const Manner manner;
};
