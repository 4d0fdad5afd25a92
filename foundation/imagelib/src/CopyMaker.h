#pragma once

#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/src/BlockMap.h"
#include "imagelib/src/reduce.h"

/// Fixes a picture and makes its smaller copies, each half the size of the one before, as its rows
/// come from the top: what has just come is still in the processor's cache.
class CopyMaker : public RowFollower {
public:
    /// `wanted`: how many copies.
    explicit CopyMaker(std::size_t wanted) : wanted(wanted) {}

    void take_rows(KIVPixmap& picture, int rows) override;

    /// Makes what is still to be made of the picture, of which all rows are there. Gives the
    /// copies, the largest first, and fewer than wanted without memory.
    std::vector<std::unique_ptr<KIVPixmap>> finish(KIVPixmap& picture);

private:
    /// A copy and its blocks.
    struct Copy {
        GrowingCopy pixels;
        std::shared_ptr<BlockMap> blocks;
        int rows = 0;
    };

    void begin(const KIVPixmap& picture);
    void prepare(const KIVPixmap& picture);

    const std::size_t wanted;
    std::shared_ptr<BlockMap>
        blocks; // of the picture; null before its first rows, or without memory
    std::vector<Copy> copies;
};
