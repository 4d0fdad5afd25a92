#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/samples.h"
#include "imagelib/src/targa_format.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
/// Uncompressed Targa at 8 bits per sample. Alpha is straight, and said to be so.
class TargaWriter : public KIVPixmapWriter {
protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "tga"; }
};

void put_16_bits(unsigned char* at, int value)
{
    at[0] = static_cast<unsigned char>(value & 0xFF);
    at[1] = static_cast<unsigned char>(value >> 8);
}

void put_head(unsigned char* head, const KIVPixmap& pixmap)
{
    std::memset(head, 0, targa::HEAD_BYTES);
    head[targa::IMAGE_TYPE] = targa::TRUE_COLOUR;
    put_16_bits(head + targa::WIDTH, pixmap.inq_width());
    put_16_bits(head + targa::HEIGHT, pixmap.inq_height());
    head[targa::DEPTH] = pixmap.inq_alpha() ? 32 : 24;
    head[targa::DESCRIPTOR] = pixmap.inq_alpha() ? targa::FROM_TOP | 8 : targa::FROM_TOP;
}

/// Blue, green, red and perhaps a straight alpha.
void put_pixel(unsigned char* to, const unsigned char* from, bool has_alpha)
{
    const unsigned alpha = has_alpha ? from[3] : 0xFFU;
    for (int c = 0; c < 3; ++c) {
        const unsigned straight = alpha ? (from[c] * 0xFFU + alpha / 2) / alpha : 0;
        to[2 - c] = static_cast<unsigned char>(std::min(straight, 0xFFU));
    }
    if (has_alpha)
        to[3] = from[3];
}

void put_rows(unsigned char* to, const KIVPixmap& pixmap)
{
    const bool has_alpha = pixmap.inq_alpha();
    const int samples = pixmap.inq_samples_per_pixel();
    std::vector<unsigned char> row(static_cast<std::size_t>(pixmap.inq_width() * samples));
    for (int y = 0; y < pixmap.inq_height(); ++y) {
        convert_pixels(row.data(), make_pix_type(samples, 8), pixmap.inq_row(y), pixmap.inq_type(),
                       pixmap.inq_width());
        const unsigned char* from = row.data();
        for (int x = 0; x < pixmap.inq_width(); ++x, to += samples, from += samples)
            put_pixel(to, from, has_alpha);
    }
}

/// Says what the alpha is, and where that is said.
void put_tail(unsigned char* tail, std::size_t offset, bool has_alpha)
{
    std::memset(tail, 0, targa::EXTENSION_BYTES);
    put_16_bits(tail, targa::EXTENSION_BYTES);
    const int alpha_kind = has_alpha ? targa::STRAIGHT : targa::NO_ALPHA;
    tail[targa::ALPHA_KIND] = static_cast<unsigned char>(alpha_kind);
    unsigned char* foot = tail + targa::EXTENSION_BYTES;
    std::memset(foot, 0, targa::FOOT_BYTES);
    put_16_bits(foot, static_cast<int>(offset & 0xFFFF));
    put_16_bits(foot + 2, static_cast<int>(offset >> 16));
    std::memcpy(foot + targa::SIGNATURE_AT, targa::SIGNATURE, sizeof(targa::SIGNATURE));
}

KIVPixmapWriter::WriteError TargaWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    constexpr int MOST = 0xFFFF;
    if (pixmap.inq_width() > MOST || pixmap.inq_height() > MOST)
        return WRITE_CANNOT_ENCODE;
    const std::size_t pixel_bytes = static_cast<std::size_t>(pixmap.inq_width()) *
                                    static_cast<std::size_t>(pixmap.inq_height()) *
                                    static_cast<std::size_t>(pixmap.inq_samples_per_pixel());
    const std::size_t tail_at = targa::HEAD_BYTES + pixel_bytes;
    char* memory = contents.reset(tail_at + targa::EXTENSION_BYTES + targa::FOOT_BYTES);
    if (!memory)
        return WRITE_NO_MEMORY;
    auto* file = reinterpret_cast<unsigned char*>(memory);
    put_head(file, pixmap);
    put_rows(file + targa::HEAD_BYTES, pixmap);
    put_tail(file + tail_at, tail_at, pixmap.inq_alpha());
    return WRITE_OKAY;
}

[[maybe_unused]] const auto* const TARGA_WRITER = new KIVPixmapWriterDescriptor(
    "TargaWriter", [](int /*variant*/) -> gsl::owner<KIVPixmapWriter*> { return new TargaWriter; });
} // namespace
