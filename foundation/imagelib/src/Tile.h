#pragma once

#include "imagelib/hdr/PixType.h"
#include "imagelib/src/Mapping.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

constexpr int BLOCK = 16; // pixels of a block's side
constexpr int BLOCKS_ACROSS = 16;
constexpr int BLOCKS_DOWN = 2;
constexpr int TILE_WIDTH = BLOCK * BLOCKS_ACROSS;
constexpr int TILE_HEIGHT = BLOCK * BLOCKS_DOWN;

/// Some blocks of a tile: one bit each, row by row from the top left.
using Blocks = std::uint32_t;
static_assert(BLOCKS_ACROSS * BLOCKS_DOWN == 32);

/// A part of a picture that is drawn as one, of at most TILE_WIDTH by TILE_HEIGHT pixels.
struct Tile {
    Interval columns;
    Interval lines;

    bool inq_is_empty() const { return columns.size() <= 0 || lines.size() <= 0; }
    bool is_inside(const Interval& other_columns, const Interval& other_lines) const
    {
        return columns.begin >= other_columns.begin && columns.end <= other_columns.end &&
               lines.begin >= other_lines.begin && lines.end <= other_lines.end;
    }
    Tile block_at(int column, int line) const
    {
        const int left = columns.begin + column * BLOCK;
        const int top = lines.begin + line * BLOCK;
        return {{left, std::min(left + BLOCK, columns.end)},
                {top, std::min(top + BLOCK, lines.end)}};
    }
};

/// The blocks that hold pixels of the tile.
inline Blocks inq_blocks(const Tile& tile)
{
    const int across = (tile.columns.size() + BLOCK - 1) / BLOCK;
    const Blocks row = (Blocks{1} << across) - 1;
    return tile.lines.size() > BLOCK ? row | row << BLOCKS_ACROSS : row;
}

/// Each chosen block of a tile, with its bit.
template <class Do> void for_each_block(const Tile& tile, Blocks chosen, Do what)
{
    for (Blocks left = chosen; left != 0; left &= left - 1) {
        const int number = std::countr_zero(left);
        what(tile.block_at(number % BLOCKS_ACROSS, number / BLOCKS_ACROSS), Blocks{1} << number);
    }
}

/// The chosen blocks of a tile, each run of neighbours in a row as one tile.
template <class Draw> void for_each_run(const Tile& tile, Blocks chosen, Draw draw)
{
    for (int line = 0; line < BLOCKS_DOWN; ++line) {
        unsigned row = (chosen >> (line * BLOCKS_ACROSS)) & 0xFFFFU;
        for (int column = 0; row != 0;) {
            const int skipped = std::countr_zero(row);
            const int count = std::countr_one(row >> skipped);
            const Tile first = tile.block_at(column + skipped, line);
            const Tile last = tile.block_at(column + skipped + count - 1, line);
            draw(Tile{{first.columns.begin, last.columns.end}, first.lines});
            column += skipped + count;
            row >>= skipped + count;
        }
    }
}

/// Pixels to be drawn on: those of a picture from `left` and `top`.
struct Canvas {
    unsigned char* data;
    std::size_t row_bytes;
    PixType type;
    int bytes_per_pixel;
    int left = 0;
    int top = 0;

    unsigned char* at(int x, int y) const
    {
        return data + static_cast<std::size_t>(y - top) * row_bytes +
               static_cast<std::size_t>(x - left) * static_cast<std::size_t>(bytes_per_pixel);
    }
};
