#pragma once

#include "imagelib/src/BlockMap.h"
#include "imagelib/src/kernels.h"

#include <memory>

/// Pixels with alpha that nobody changes any more, kept for as long as somebody has to draw them.
struct FixedPixels {
    std::shared_ptr<const unsigned char> memory;
    std::shared_ptr<const BlockMap> blocks; // null: nothing is known of them
    SourcePixels pixels;
    std::size_t bytes;
};
