#pragma once

#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/src/Alpha.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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

    /// Of a pixel. A damaged file may claim any of both.
    std::size_t inq_bits() const
    {
        return static_cast<std::size_t>(samples) * static_cast<std::size_t>(bits);
    }
    std::size_t inq_bytes() const { return inq_bits() / 8; }
    bool operator==(const RowLayout&) const = default;
};

/// Puts pixels into row `y` from column `x`, with alpha and premultiplied.
void put_pixels(KIVPixmap& picture, int x, int y, const void* pixels, int count,
                const RowLayout& layout);

/// Takes the rows of a picture as the file has them, each whole and once.
class RowTarget {
public:
    virtual ~RowTarget() = default;

    /// False if there is no use in going on.
    virtual bool put_row(int y, const void* pixels, const RowLayout& layout) = 0;

    /// Where the pixels of row `y` may be written to instead; null if they must be given.
    virtual unsigned char* inq_place(int /*y*/, const RowLayout& /*layout*/) { return nullptr; }

    /// The first `rows` rows are in their places, or have been given.
    virtual void note_rows(int /*rows*/) {}
};

/// In pixels, of a picture or of one of its blocks; more makes no sense.
constexpr int LONGEST_SIDE = 1000000;

/// The most that deflate can make of a byte.
constexpr std::uint64_t MOST_BY_DEFLATE = 1032;

/// The most that the LZW of GIF and TIFF can make of a byte: strings of 3838 by codes of 12 bits.
constexpr std::uint64_t MOST_BY_LZW = 2560;

/// Reads one file, which outlives it. The steps are made in order, each once, and none after one
/// that failed. A head that can be read from the file's beginning alone is the same as from all of
/// it.
class PictureReader {
public:
    virtual ~PictureReader() = default;

    /// In memory, for the pixels.
    virtual bool needs_whole_file() const { return true; }

    /// Sizes are as the file has them, before they are turned by the orientation.
    virtual bool read_head(PictureInfo& info) = 0;

    /// From here on the head has been read. No file of so many bytes can hold more pixels.
    virtual std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const = 0;

    /// Whether the rows come in their order.
    virtual bool is_from_top() const { return true; }

    virtual bool read_pixels(RowTarget& target) = 0;

    /// How the picture lies in the file, as TIFF and EXIF count: 1 for upright, to 8.
    int inq_orientation() const { return orientation; }

    /// Why a step failed, without the name of the file. The target knows more if it gave up.
    const KIVString& inq_error() const { return error; }

protected:
    /// Gives false, for the step to return.
    bool fail(const KIVString& reason)
    {
        error = reason;
        return false;
    }

    bool fail_by_target() { return fail("the rows of the image could not be taken"); }
    void set_orientation(int told) { orientation = told >= 1 && told <= 8 ? told : 1; }

private:
    KIVString error;
    int orientation = 1;
};

// A reader for the file or its beginning, or null if the contents are of another format.

/// Reads by itself, as the head may lie anywhere.
std::unique_ptr<PictureReader> make_tiff_reader(Bytes start, const FileHandle& file,
                                                std::size_t size);

/// The same for one of the pages of a TIFF file, counted from 0.
std::unique_ptr<PictureReader> make_tiff_page_reader(const FileHandle& file, std::size_t size,
                                                     int page);

std::unique_ptr<PictureReader> make_png_reader(Bytes file);
std::unique_ptr<PictureReader> make_jpeg_reader(Bytes file);
std::unique_ptr<PictureReader> make_gif_reader(Bytes file);
std::unique_ptr<PictureReader> make_pnm_reader(Bytes file);

/// The format has no mark of its own, so it is asked last.
std::unique_ptr<PictureReader> make_targa_reader(Bytes file);

/// Asks for a target once the head is known; null ends the reading.
using TargetMaker = std::function<RowTarget*(const PictureInfo& info)>;

/// Reads the rows of a file, upright and from the top. Most formats need little memory for it; the
/// rows of those that have them in another order are gathered first. False with a text for the
/// user; the target knows more if it gave up.
bool read_picture_rows(const KIVString& file, const TargetMaker& make_target, KIVString& error);
