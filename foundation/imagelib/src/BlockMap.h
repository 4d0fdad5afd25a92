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

    BlockMap(int width, int height);

    /// Looks at the blocks that lie in the first `rows` rows, `bits` per sample, but not again at
    /// those that it has seen. It is of use when it has seen all.
    void look_at_rows(const unsigned char* data, std::size_t row_bytes, int bits, int rows);

    /// Of all blocks under these pixels, of which those outside the picture do not count.
    Content inq_content(Interval columns, Interval lines) const;

private:
    template <class Sample> void look_at_line(const unsigned char* data, std::size_t row_bytes);

    enum : unsigned char { SEEN = 1, TRANSLUCENT = 2 };

    int width;
    int height;
    int across;
    int next_line = 0;                // the first row of the blocks that were not looked at
    std::vector<unsigned char> marks; // by block
};
