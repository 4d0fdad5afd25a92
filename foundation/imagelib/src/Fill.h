#pragma once

#include "imagelib/src/Layer.h"

/// One colour all over, in the place of what was there; once it went onto another picture, over it.
class Fill : public Layer {
public:
    /// `pixel`: with alpha, of `bytes_per_pixel` bytes.
    Fill(int width, int height, const unsigned char* pixel, int bytes_per_pixel);

    Effect look_at(const Tile& tile) override;
    void draw(const Canvas& canvas, const Tile& tile, Blocks chosen, Scratch& scratch) override;

private:
    void move(int x, int y) override;

    const int bytes_per_pixel;
    alignas(std::uint16_t) unsigned char row[TILE_WIDTH * 8];
    bool replaces = true;
};
