#pragma once

#include "imagelib/src/Tile.h"

#include <vector>

/// Which blocks of a picture with alpha are empty, and which are opaque.
class BlockMap {
public:
    struct Content {
        bool is_empty;
        bool is_opaque;
    };

    /// `bits` per sample.
    BlockMap(const unsigned char* data, std::size_t row_bytes, int width, int height, int bits);

    /// Of all blocks under these pixels, of which those outside the picture do not count.
    Content inq_content(Interval columns, Interval lines) const;

private:
    template <class Sample> void look_at(const unsigned char* data, std::size_t row_bytes);

    enum : unsigned char { SEEN = 1, TRANSLUCENT = 2 };

    int width;
    int height;
    int across;
    std::vector<unsigned char> marks; // by block
};
