#pragma once

#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/src/Alpha.h"

#include <cstddef>
#include <memory>
#include <span>

class FileHandle;
class KIVPixmap;

using Bytes = std::span<const unsigned char>;

/// Pixels as a file has them: grey or colour, at 8 bits or at 16 in the processor's byte order.
struct RowLayout {
    int samples; // 1 or 2 for grey, 3 or 4 for colour; the last of 2 and 4 is alpha, used or not
    int bits;
    Alpha alpha;

    std::size_t inq_bytes() const { return static_cast<std::size_t>(samples * bits / 8); }
};

/// Puts pixels into row `y` from column `x`, with alpha and premultiplied.
void put_pixels(KIVPixmap& picture, int x, int y, const void* pixels, int count,
                const RowLayout& layout);

/// Whether a file of this size can hold the picture at all: the best of coders goes some way beyond
/// a thousand pixels to a byte.
bool is_plausible(long width, long height, std::size_t file_bytes);

/// Reads one file, which outlives it. The steps are made in order, each once, and none after one
/// that failed. A head that can be read from the file's beginning alone is the same as from all of
/// it.
class PictureReader {
public:
    virtual ~PictureReader() = default;

    /// In memory, for the pixels.
    virtual bool needs_whole_file() const { return true; }

    virtual bool read_head(PictureInfo& info) = 0;

    /// `picture` is of the size that the head told, and with alpha.
    virtual bool read_pixels(KIVPixmap& picture) = 0;

    /// Why a step failed, without the name of the file.
    const KIVString& inq_error() const { return error; }

protected:
    /// Gives false, for the step to return.
    bool fail(const KIVString& reason)
    {
        error = reason;
        return false;
    }

private:
    KIVString error;
};

// A reader for the file or its beginning, or null if the contents are of another format.

/// Reads by itself, as the head may lie anywhere.
std::unique_ptr<PictureReader> make_tiff_reader(Bytes start, const FileHandle& file,
                                                std::size_t size);

std::unique_ptr<PictureReader> make_png_reader(Bytes file);
std::unique_ptr<PictureReader> make_jpeg_reader(Bytes file);
std::unique_ptr<PictureReader> make_gif_reader(Bytes file);
std::unique_ptr<PictureReader> make_pnm_reader(Bytes file);

/// The format has no mark of its own, so it is asked last.
std::unique_ptr<PictureReader> make_targa_reader(Bytes file);
