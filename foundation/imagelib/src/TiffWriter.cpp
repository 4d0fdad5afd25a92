#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/TiffStream.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
/// TIFF at the pixmap's own depth, compressed without loss or plain. Alpha is associated, which is
/// what a pixmap holds.
class TiffWriter : public KIVPixmapWriter {
public:
    explicit TiffWriter(bool is_compressed) : is_compressed(is_compressed) {}

protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "tif"; }

private:
    bool is_compressed;
};

constexpr int ROWS_PER_STRIP = 64;
constexpr int FASTEST_LEVEL = 1;

void set_layout(TIFF* tiff, const KIVPixmap& pixmap)
{
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, pixmap.inq_width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, pixmap.inq_height());
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, pixmap.inq_samples_per_pixel());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, pixmap.inq_bits_per_sample());
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, ROWS_PER_STRIP);
    if (pixmap.inq_alpha()) {
        const std::uint16_t kind = EXTRASAMPLE_ASSOCALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
}

void set_resolution(TIFF* tiff, const KIVPixmap& pixmap)
{
    if (!(pixmap.inq_x_dpi() > 0.0) || !(pixmap.inq_y_dpi() > 0.0))
        return;
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, pixmap.inq_x_dpi());
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, pixmap.inq_y_dpi());
}

/// Of the ways to compress, the fast level of deflate gives the smaller file in less time.
void set_compression(TIFF* tiff, bool is_compressed)
{
    TIFFSetField(tiff, TIFFTAG_COMPRESSION,
                 is_compressed ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE);
    if (!is_compressed)
        return;
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, FASTEST_LEVEL);
}

bool write_strips(TIFF* tiff, const KIVPixmap& pixmap)
{
    const auto row = static_cast<std::size_t>(pixmap.inq_width() * pixmap.inq_bytes_per_pixel());
    std::vector<unsigned char> strip(row * ROWS_PER_STRIP);
    std::uint32_t number = 0;
    for (int first = 0; first < pixmap.inq_height(); first += ROWS_PER_STRIP, ++number) {
        const int rows = std::min(ROWS_PER_STRIP, pixmap.inq_height() - first);
        for (int y = 0; y < rows; ++y)
            std::memcpy(strip.data() + static_cast<std::size_t>(y) * row, pixmap.inq_row(first + y),
                        row);
        const auto bytes = static_cast<tmsize_t>(row * static_cast<std::size_t>(rows));
        if (TIFFWriteEncodedStrip(tiff, number, strip.data(), bytes) != bytes)
            return false;
    }
    return true;
}

KIVPixmapWriter::WriteError TiffWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    TiffStream stream(contents);
    TIFF* tiff = stream.open_to_write();
    if (!tiff)
        return WRITE_CANNOT_ENCODE;
    set_layout(tiff, pixmap);
    set_resolution(tiff, pixmap);
    set_compression(tiff, is_compressed);
    const bool is_whole = write_strips(tiff, pixmap) && TIFFFlush(tiff) == 1;
    return is_whole && stream.close() ? WRITE_OKAY : WRITE_CANNOT_ENCODE;
}

[[maybe_unused]] const auto* const TIFF_WRITER =
    new KIVPixmapWriterDescriptor("TiffWriter", [](int variant) -> gsl::owner<KIVPixmapWriter*> {
        return new TiffWriter(variant != 0);
    });
} // namespace
