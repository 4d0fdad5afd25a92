#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/TiffCompression.h"
#include "imagelib/src/TiffPage.h"
#include "imagelib/src/TiffStream.h"
#include "imagelib/src/WrittenFile.h"
#include "imagelib/src/ZlibPacker.h"
#include "imagelib/src/row_kernels.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
TiffCompression our_tiff_compression = TiffCompression::DEFLATE;

/// TIFF at the pixmap's own depth, compressed without loss or plain. Alpha is associated, which is
/// what a pixmap holds.
class TiffWriter : public KIVPixmapWriter {
public:
    explicit TiffWriter(bool is_compressed) : is_compressed(is_compressed) {}

protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "tif"; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;

private:
    bool is_compressed;
};

constexpr int ROWS_PER_STRIP = 64;
constexpr const char* SOFTWARE = "montaraystore";

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
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, SOFTWARE);
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

void set_profile(TIFF* tiff)
{
    const ProfileData& profile = inq_colour_manager()->inq_frame_profile_data();
    if (!profile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                     profile.data());
}

void set_compression(TIFF* tiff, int scheme)
{
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme);
    if (scheme != COMPRESSION_NONE)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
}

/// Gives a pixmap to a file in strips.
class StripWriter {
public:
    StripWriter(TIFF* tiff, const KIVPixmap& pixmap)
        : tiff(tiff), pixmap(pixmap),
          row_bytes(static_cast<std::size_t>(pixmap.inq_width()) *
                    static_cast<std::size_t>(pixmap.inq_bytes_per_pixel()))
    {}

    /// False without memory.
    bool prepare(int scheme)
    {
        const std::size_t most = row_bytes * ROWS_PER_STRIP;
        if (!strip.reset(most))
            return false;
        if (scheme != COMPRESSION_ADOBE_DEFLATE)
            return true;
        packer = std::make_unique<ZlibPacker>();
        return packed.reset(ZlibPacker::inq_most(most)) != nullptr;
    }

    bool write()
    {
        for (first = 0; first < pixmap.inq_height(); first += ROWS_PER_STRIP)
            if (!(packer ? write_packed() : write_plain()))
                return false;
        return true;
    }

private:
    std::size_t inq_rows() const
    {
        return static_cast<std::size_t>(std::min(ROWS_PER_STRIP, pixmap.inq_height() - first));
    }
    std::uint32_t inq_number() const { return static_cast<std::uint32_t>(first / ROWS_PER_STRIP); }

    /// The strip is compressed here and not by the format's library, which is several times slower.
    bool write_packed()
    {
        for (std::size_t y = 0; y < inq_rows(); ++y)
            put_differences(strip.data() + y * row_bytes,
                            pixmap.inq_row(first + static_cast<int>(y)), row_bytes,
                            static_cast<std::size_t>(pixmap.inq_bytes_per_pixel()),
                            pixmap.inq_bits_per_sample());
        const std::size_t size = packer->pack(strip.data(), inq_rows() * row_bytes, packed.data());
        const auto bytes = static_cast<tmsize_t>(size);
        return size > 0 && TIFFWriteRawStrip(tiff, inq_number(), packed.data(), bytes) == bytes;
    }

    bool write_plain()
    {
        const auto bytes = static_cast<tmsize_t>(inq_rows() * row_bytes);
        return TIFFWriteEncodedStrip(tiff, inq_number(), gather_rows(), bytes) == bytes;
    }

    /// The rows of the strip without gaps; they are not written to.
    void* gather_rows()
    {
        if (row_bytes == pixmap.inq_row_bytes())
            return const_cast<unsigned char*>(pixmap.inq_row(first));
        for (std::size_t y = 0; y < inq_rows(); ++y)
            std::memcpy(strip.data() + y * row_bytes, pixmap.inq_row(first + static_cast<int>(y)),
                        row_bytes);
        return strip.data();
    }

    TIFF* tiff; // not owned
    const KIVPixmap& pixmap;
    std::size_t row_bytes;
    int first = 0; // row of the strip in hand
    std::unique_ptr<ZlibPacker> packer;
    ByteBuffer strip;
    ByteBuffer packed;
};

int inq_scheme(bool is_compressed)
{
    if (!is_compressed)
        return COMPRESSION_NONE;
    return our_tiff_compression == TiffCompression::LZW ? COMPRESSION_LZW
                                                        : COMPRESSION_ADOBE_DEFLATE;
}

bool TiffWriter::is_whole(const WrittenFile& file, const PictureForm& form) const
{
    TiffStream stream(file.inq_handle(), file.inq_size(), LARGEST_TIFF_BLOCK);
    TIFF* tiff = stream.open_to_read();
    if (!tiff)
        return false;
    const RowLayout layout = TiffPage::look(tiff).layout;
    return layout.samples == form.samples && layout.bits == form.bits &&
           get_tiff_field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION) == inq_scheme(is_compressed) &&
           file.can_be_read(form);
}

KIVPixmapWriter::WriteError TiffWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    const int scheme = inq_scheme(is_compressed);
    constexpr std::size_t TAGS = 4096;
    if (!contents.make_room(TAGS + pixmap.inq_bytes() / (is_compressed ? 8 : 1)))
        return WRITE_NO_MEMORY;
    TiffStream stream(contents);
    TIFF* tiff = stream.open_to_write();
    if (!tiff)
        return WRITE_NO_MEMORY;
    set_layout(tiff, pixmap);
    set_resolution(tiff, pixmap);
    set_profile(tiff);
    set_compression(tiff, scheme);
    StripWriter strips(tiff, pixmap);
    if (!strips.prepare(scheme))
        return WRITE_NO_MEMORY;
    const bool is_whole = strips.write() && TIFFFlush(tiff) == 1;
    return is_whole && stream.close() ? WRITE_OKAY : WRITE_CANNOT_ENCODE;
}

[[maybe_unused]] const auto* const TIFF_WRITER =
    new KIVPixmapWriterDescriptor("TiffWriter", [](int variant) -> gsl::owner<KIVPixmapWriter*> {
        return new TiffWriter(variant != 0);
    });
} // namespace

void set_tiff_compression(TiffCompression compression)
{
    our_tiff_compression = compression;
}
