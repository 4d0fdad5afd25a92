#pragma once

#include "imagelib/src/PictureReader.h"

#include <cstdlib>

/// The rows of a PNG file that is not interlaced, as they lie there, in half the time that the
/// format's library takes. All that is unusual or damaged is left to the library, which can say
/// what it is.
class PngRows {
public:
    PngRows(std::size_t row_bytes, std::size_t pixel_bytes, int height)
        : row_bytes(row_bytes), pixel_bytes(pixel_bytes), height(static_cast<std::size_t>(height))
    {}

    /// Takes the pixels out of the file, whose head is sound. False, if it is left to the library.
    bool unpack(Bytes file);

    /// From the top, each once. It is not to be changed: the next one builds on it.
    const unsigned char* next_row();

private:
    bool inflate(Bytes packed);
    bool has_known_filters() const;

    std::size_t row_bytes;
    std::size_t pixel_bytes;
    std::size_t height;
    struct Free {
        void operator()(unsigned char* memory) const { std::free(memory); }
    };
    std::unique_ptr<unsigned char, Free> rows; // each behind the number of its filter
    std::size_t next = 0;
};
