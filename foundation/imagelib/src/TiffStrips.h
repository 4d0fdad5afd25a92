#pragma once

#include "imagelib/src/TiffPage.h"
#include "kivlib/hdr/ByteBuffer.h"

#include <memory>

class FileHandle;
struct libdeflate_decompressor;

/// Strips of a TIFF page that are read past the format's library: samples as they lie in memory,
/// plain or packed by deflate. What is unusual or damaged is left to the library.
class TiffStrips {
public:
    TiffStrips(TIFF* tiff, const TiffPage& page, const FileHandle& file, std::size_t file_bytes);
    TiffStrips(const TiffStrips&) = delete;
    TiffStrips& operator=(const TiffStrips&) = delete;
    ~TiffStrips();

    /// Whether rows have, but for each first pixel, the difference to the pixel on the left.
    bool have_differences() const { return scheme == Scheme::PACKED_DIFFERENCES; }
    bool are_plain() const { return scheme == Scheme::PLAIN; }

    /// Reads the `bytes` bytes of the strip that begins with row `first`. False if the library
    /// should be asked; they are then undefined.
    bool read(int first, unsigned char* to, std::size_t bytes);

    /// The same with a part of a plain strip, `before` bytes from its beginning.
    bool read_plain(int first, std::size_t before, unsigned char* to, std::size_t bytes) const;

private:
    enum class Scheme { OTHER, PLAIN, PACKED, PACKED_DIFFERENCES };

    /// Where a strip lies in the file.
    struct Extent {
        std::uint64_t place;
        std::uint64_t bytes; // 0 if it isn't there as a whole
    };

    static Scheme find_scheme(TIFF* tiff, const TiffPage& page);
    Extent find_strip(int first) const;
    bool read_file(std::uint64_t place, void* to, std::size_t bytes) const;
    bool unpack(unsigned char* to, std::size_t bytes, std::size_t packed_bytes);

    TIFF* const tiff;       // not owned
    const FileHandle& file; // not owned
    const std::size_t file_bytes;
    const Scheme scheme;
    ByteBuffer packed;
    std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decompressor;
};
