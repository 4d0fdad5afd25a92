#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "imagelib/src/row_kernels.h"
#include "imagelib/src/targa_format.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
/// Uncompressed Targa at 8 bits per sample, which every reader knows. Alpha is straight, since few
/// readers look where the file says so.
class TargaWriter : public KIVPixmapWriter {
protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "tga"; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;
};

void put_16_bits(unsigned char* at, int value)
{
    at[0] = static_cast<unsigned char>(value & 0xFF);
    at[1] = static_cast<unsigned char>(value >> 8);
}

void put_head(unsigned char* head, int width, int height, bool has_alpha)
{
    std::memset(head, 0, targa::HEAD_BYTES);
    head[targa::IMAGE_TYPE] = targa::TRUE_COLOUR;
    put_16_bits(head + targa::WIDTH, width);
    put_16_bits(head + targa::HEIGHT, height);
    head[targa::DEPTH] = has_alpha ? 32 : 24;
    head[targa::DESCRIPTOR] = has_alpha ? targa::FROM_TOP | 8 : targa::FROM_TOP;
}

void put_rows(unsigned char* to, const KIVPixmap& pixmap)
{
    const int samples = pixmap.inq_samples_per_pixel();
    FileRows rows(pixmap, make_pix_type(samples, 8), Alpha::STRAIGHT);
    for (int y = 0; y < pixmap.inq_height(); ++y, to += pixmap.inq_width() * samples)
        swap_red_and_blue(to, rows.inq_row(y), pixmap.inq_width(), samples);
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

constexpr std::size_t TAIL_BYTES = targa::EXTENSION_BYTES + targa::FOOT_BYTES;

std::size_t inq_tail_place(int width, int height, int samples)
{
    return targa::HEAD_BYTES + static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                   static_cast<std::size_t>(samples);
}

bool TargaWriter::is_whole(const WrittenFile& file, const PictureForm& form) const
{
    unsigned char head[targa::HEAD_BYTES];
    put_head(head, form.width, form.height, form.samples == 4);
    return file.inq_size() == inq_tail_place(form.width, form.height, form.samples) + TAIL_BYTES &&
           file.has(0, head);
}

KIVPixmapWriter::WriteError TargaWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    constexpr int MOST = 0xFFFF;
    if (pixmap.inq_width() > MOST || pixmap.inq_height() > MOST)
        return WRITE_WRONG_SIZE;
    const std::size_t tail_at =
        inq_tail_place(pixmap.inq_width(), pixmap.inq_height(), pixmap.inq_samples_per_pixel());
    char* memory = contents.reset(tail_at + TAIL_BYTES);
    if (!memory)
        return WRITE_NO_MEMORY;
    auto* file = reinterpret_cast<unsigned char*>(memory);
    put_head(file, pixmap.inq_width(), pixmap.inq_height(), pixmap.inq_alpha());
    put_rows(file + targa::HEAD_BYTES, pixmap);
    put_tail(file + tail_at, tail_at, pixmap.inq_alpha());
    return WRITE_OKAY;
}

[[maybe_unused]] const auto* const TARGA_WRITER = new KIVPixmapWriterDescriptor(
    "TargaWriter", [](int /*variant*/) -> gsl::owner<KIVPixmapWriter*> { return new TargaWriter; });
} // namespace
