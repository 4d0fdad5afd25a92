#include "imagelib/src/TiffStrips.h"

#include "kivlib/hdr/FileHandle.h"

#include <libdeflate.h>
#include <unistd.h>

TiffStrips::TiffStrips(TIFF* tiff, const TiffPage& page, const FileHandle& file,
                       std::size_t file_bytes)
    : tiff(tiff), file(file), file_bytes(file_bytes), scheme(find_scheme(tiff, page)),
      decompressor(nullptr, libdeflate_free_decompressor)
{
    if (scheme == Scheme::PACKED || scheme == Scheme::PACKED_DIFFERENCES)
        decompressor.reset(libdeflate_alloc_decompressor());
}

TiffStrips::~TiffStrips() = default;

TiffStrips::Scheme TiffStrips::find_scheme(TIFF* tiff, const TiffPage& page)
{
    const bool is_in_place = page.layout.bits == 8 || !TIFFIsByteSwapped(tiff);
    if (!page.is_plain || page.is_tiled || page.is_in_planes || page.is_negative || !is_in_place ||
        get_tiff_field<std::uint16_t>(tiff, TIFFTAG_FILLORDER) != FILLORDER_MSB2LSB)
        return Scheme::OTHER;
    const auto compression = get_tiff_field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION);
    if (compression == COMPRESSION_NONE)
        return Scheme::PLAIN;
    if (compression != COMPRESSION_DEFLATE && compression != COMPRESSION_ADOBE_DEFLATE)
        return Scheme::OTHER;
    switch (get_tiff_field<std::uint16_t>(tiff, TIFFTAG_PREDICTOR)) {
    case PREDICTOR_NONE:
        return Scheme::PACKED;
    case PREDICTOR_HORIZONTAL:
        return Scheme::PACKED_DIFFERENCES;
    default:
        return Scheme::OTHER;
    }
}

bool TiffStrips::read_file(std::uint64_t place, void* to, std::size_t bytes) const
{
    const ssize_t count = ::pread(file.inq_descriptor(), to, bytes, static_cast<off_t>(place));
    return count == static_cast<ssize_t>(bytes);
}

TiffStrips::Extent TiffStrips::find_strip(int first) const
{
    const std::uint32_t strip = TIFFComputeStrip(tiff, static_cast<std::uint32_t>(first), 0);
    const std::uint64_t place = TIFFGetStrileOffset(tiff, strip);
    const std::uint64_t bytes = TIFFGetStrileByteCount(tiff, strip);
    const bool is_there = place != 0 && place <= file_bytes && bytes <= file_bytes - place;
    return {place, is_there ? bytes : 0};
}

bool TiffStrips::read_plain(int first, std::size_t before, unsigned char* to,
                            std::size_t bytes) const
{
    const Extent strip = find_strip(first);
    return scheme == Scheme::PLAIN && before + bytes <= strip.bytes &&
           read_file(strip.place + before, to, bytes);
}

bool TiffStrips::read(int first, unsigned char* to, std::size_t bytes)
{
    if (scheme == Scheme::OTHER)
        return false;
    if (scheme == Scheme::PLAIN)
        return read_plain(first, 0, to, bytes);
    const Extent strip = find_strip(first);
    const auto packed_bytes = static_cast<std::size_t>(strip.bytes);
    return packed_bytes > 0 && packed.reset(packed_bytes) &&
           read_file(strip.place, packed.data(), packed_bytes) && unpack(to, bytes, packed_bytes);
}

bool TiffStrips::unpack(unsigned char* to, std::size_t bytes, std::size_t packed_bytes)
{
    std::size_t unpacked = 0;
    return decompressor &&
           libdeflate_zlib_decompress(decompressor.get(), packed.data(), packed_bytes, to, bytes,
                                      &unpacked) == LIBDEFLATE_SUCCESS &&
           unpacked == bytes;
}
