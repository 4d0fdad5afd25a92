#pragma once

#include "imagelib/src/PictureReader.h"

#include <tiffio.h>

/// How one of the pictures of a TIFF file lies there.
struct TiffPage {
    int width = 0; // 0: none that makes sense
    int height = 0;
    int orientation = 1;
    bool is_tiled = false;
    int block_width = 0; // of tiles, or of strips
    int block_height = 0;
    RowLayout layout = {1, 8, Alpha::NONE};

    /// Whole samples of 8 or 16 bits in a common layout. The many others are left to the format's
    /// library, which turns them into 8 bits.
    bool is_plain = false;
    bool is_in_planes = false; // each sample of the layout by itself
    bool is_negative = false;  // a grey of 0 is white

    /// The page that the file stands at.
    static TiffPage look(TIFF* tiff);

    /// Bytes of a block, as the library gives it: all samples, or one plane of them.
    std::size_t inq_block_bytes() const;

    /// Whether a block can be had in memory.
    bool is_sane() const;

    bool operator==(const TiffPage&) const = default;
};

/// Nothing takes more memory at once. Some files lie in one strip; no tile is that large.
constexpr std::size_t LARGEST_TIFF_BLOCK = std::size_t{1} << 30;
constexpr std::size_t LARGEST_TIFF_TILE = std::size_t{1} << 27;

/// A field of the page, or what stands for it.
template <class Value> Value get_tiff_field(TIFF* tiff, std::uint32_t tag)
{
    Value value = {};
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

/// Pixels per inch; false, and no change, if the page doesn't tell them.
bool get_tiff_resolution(TIFF* tiff, double& x_dpi, double& y_dpi);
