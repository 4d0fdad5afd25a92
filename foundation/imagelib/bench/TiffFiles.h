#pragma once

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "kivlib/hdr/ClassManager.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <tiffio.h>

// Files of this library and of libtiff alone.

namespace bench {

/// In memory where there is a folder for that, so that no disc is measured.
inline std::string inq_file(const char* name)
{
    const std::filesystem::path memory = "/dev/shm";
    const bool is_there = std::filesystem::is_directory(memory);
    return ((is_there ? memory : std::filesystem::temp_directory_path()) /
            (name + std::to_string(std::rand())))
        .string();
}

inline std::unique_ptr<KIVPixmapWriter> new_writer(const char* writer_class, int variant)
{
    const ClassDescriptor* descriptor = ClassManager::inq_main()->find_cd_for(writer_class);
    return std::unique_ptr<KIVPixmapWriter>(
        static_cast<const KIVPixmapWriterDescriptor*>(descriptor)->new_writer(variant));
}

/// Four samples of 8 bits.
inline void write_with_libtiff(const std::string& file, const KIVPixmap& frame, int scheme)
{
    constexpr int STRIP = 64; // rows
    TIFF* tiff = TIFFOpen(file.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, frame.inq_width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, frame.inq_height());
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, STRIP);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme);
    if (scheme != COMPRESSION_NONE)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (scheme == COMPRESSION_ADOBE_DEFLATE)
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 1);
    for (int y = 0; y < frame.inq_height(); y += STRIP) {
        const int rows = std::min(STRIP, frame.inq_height() - y);
        TIFFWriteEncodedStrip(tiff, static_cast<std::uint32_t>(y / STRIP),
                              const_cast<unsigned char*>(frame.inq_row(y)),
                              static_cast<tmsize_t>(frame.inq_width()) * 4 * rows);
    }
    TIFFClose(tiff);
}

/// The samples as they stand in the file.
inline std::unique_ptr<unsigned char[]> read_with_libtiff(const std::string& file)
{
    TIFF* tiff = TIFFOpen(file.c_str(), "r");
    const tmsize_t strip_bytes = TIFFStripSize(tiff);
    const std::uint32_t strips = TIFFNumberOfStrips(tiff);
    std::unique_ptr<unsigned char[]> samples(
        new unsigned char[static_cast<std::size_t>(strip_bytes) * strips]);
    for (std::uint32_t strip = 0; strip < strips; ++strip)
        TIFFReadEncodedStrip(tiff, strip, samples.get() + strip * strip_bytes, strip_bytes);
    TIFFClose(tiff);
    return samples;
}

} // namespace bench
