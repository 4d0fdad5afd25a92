#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/BigEndian.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
/// PICT version 2: one direct picture of 8 bits per sample, its rows packed sample by sample.
/// Alpha is straight, as readers take it.
class PictWriter : public KIVPixmapWriter {
protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "pict"; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;
};

constexpr int FREE_BYTES = 512; // for the use of the program that owns the file
constexpr int MOST_BYTES = FREE_BYTES + 256;

// Shorter rows than eight bytes would not be packed, and longer ones have no number.
constexpr int LEAST_WIDTH = 2;
constexpr int MOST_WIDTH = 0x7FFF / 4;
constexpr int MOST_HEIGHT = 0x7FFF;

enum Code {
    VERSION_CODE = 0x0011,
    VERSION_2 = 0x02FF,
    HEADER_CODE = 0x0C00,
    HEADER_WITH_RESOLUTION = 0xFFFE,
    CLIP_CODE = 0x0001,
    DIRECT_BITS_CODE = 0x009A,
    END_CODE = 0x00FF
};

/// Dots per inch with 16 bits behind the point.
unsigned inq_resolution(double dpi)
{
    constexpr double USUAL = 72.0;
    constexpr double MOST = 32767.0;
    return static_cast<unsigned>(std::lround((dpi > 0.0 ? std::min(dpi, MOST) : USUAL) * 0x10000));
}

void put_frame(BigEndian& out, int width, int height)
{
    out.put_32(0); // top, left
    out.put_16(static_cast<unsigned>(height)).put_16(static_cast<unsigned>(width));
}

void put_frame(BigEndian& out, const KIVPixmap& pixmap)
{
    put_frame(out, pixmap.inq_width(), pixmap.inq_height());
}

void put_resolution(BigEndian& out, const KIVPixmap& pixmap)
{
    out.put_32(inq_resolution(pixmap.inq_x_dpi())).put_32(inq_resolution(pixmap.inq_y_dpi()));
}

void put_picture_head(BigEndian& out, const KIVPixmap& pixmap)
{
    out.put_16(0); // the size of the picture, filled in at the end
    put_frame(out, pixmap);
    out.put_16(VERSION_CODE).put_16(VERSION_2);
    out.put_16(HEADER_CODE).put_16(HEADER_WITH_RESOLUTION).put_16(0);
    put_resolution(out, pixmap);
    put_frame(out, pixmap);
    out.put_32(0);
    constexpr unsigned CLIP_BYTES = 10;
    out.put_16(CLIP_CODE).put_16(CLIP_BYTES);
    put_frame(out, pixmap);
}

void put_pixel_head(BigEndian& out, const KIVPixmap& pixmap)
{
    constexpr unsigned NO_ADDRESS = 0xFF;
    constexpr unsigned IS_PIXMAP = 0x8000;
    constexpr unsigned PACKED_BY_SAMPLE = 4;
    constexpr unsigned DIRECT_COLOUR = 16;
    constexpr unsigned COPY_MODE = 0;
    out.put_16(DIRECT_BITS_CODE).put_32(NO_ADDRESS);
    out.put_16(IS_PIXMAP | static_cast<unsigned>(4 * pixmap.inq_width()));
    put_frame(out, pixmap);
    out.put_16(0).put_16(PACKED_BY_SAMPLE).put_32(0);
    put_resolution(out, pixmap);
    out.put_16(DIRECT_COLOUR).put_16(32);
    out.put_16(static_cast<unsigned>(pixmap.inq_samples_per_pixel())).put_16(8);
    out.put_32(0).put_32(0).put_32(0); // planes, table of colours, reserved
    put_frame(out, pixmap);
    put_frame(out, pixmap);
    out.put_16(COPY_MODE);
}

constexpr int LONGEST_RUN = 128;

/// How many bytes from the first are equal to it.
int count_equal(const unsigned char* from, const unsigned char* end)
{
    const int most = static_cast<int>(std::min<std::ptrdiff_t>(end - from, LONGEST_RUN));
    int count = 1;
    while (count < most && from[count] == *from)
        ++count;
    return count;
}

/// How many bytes stand before the next run of three.
int count_different(const unsigned char* from, const unsigned char* end)
{
    const int most = static_cast<int>(std::min<std::ptrdiff_t>(end - from, LONGEST_RUN));
    for (int count = 0; count + 2 < most; ++count)
        if (from[count] == from[count + 1] && from[count] == from[count + 2])
            return count;
    return most;
}

unsigned char* pack_bits(unsigned char* to, const unsigned char* from, const unsigned char* end)
{
    while (from < end) {
        int count = count_equal(from, end);
        if (count > 2) {
            *to++ = static_cast<unsigned char>(1 - count);
            *to++ = *from;
        } else {
            count = count_different(from, end);
            *to++ = static_cast<unsigned char>(count - 1);
            std::memcpy(to, from, static_cast<std::size_t>(count));
            to += count;
        }
        from += count;
    }
    return to;
}

/// Packs rows one after the other: all of a row's alpha, if there is any, then its red, its green
/// and its blue.
class RowPacker {
public:
    explicit RowPacker(const KIVPixmap& pixmap)
        : width(static_cast<std::size_t>(pixmap.inq_width())),
          samples(static_cast<std::size_t>(pixmap.inq_samples_per_pixel())), plane(width)
    {}

    /// With the number of bytes before them.
    std::size_t inq_most_bytes() const { return 2 + samples * (width + width / LONGEST_RUN + 1); }

    unsigned char* put_row(unsigned char* to, const unsigned char* row)
    {
        constexpr std::size_t LONGEST_WITH_SHORT_COUNT = 250;
        const bool is_long = 4 * width > LONGEST_WITH_SHORT_COUNT;
        unsigned char* const start = to + (is_long ? 2 : 1);
        unsigned char* end = start;
        for (std::size_t i = 0; i < samples; ++i)
            end = put_plane(end, row + (i + 3) % samples);
        const auto count = static_cast<unsigned>(end - start);
        BigEndian out(to);
        is_long ? out.put_16(count) : out.put_8(count);
        return end;
    }

private:
    unsigned char* put_plane(unsigned char* to, const unsigned char* from)
    {
        for (std::size_t x = 0; x < width; ++x)
            plane[x] = from[x * samples];
        return pack_bits(to, plane.data(), plane.data() + width);
    }

    std::size_t width;
    std::size_t samples;
    std::vector<unsigned char> plane;
};

unsigned char* put_rows(unsigned char* to, const KIVPixmap& pixmap)
{
    RowPacker packer(pixmap);
    FileRows rows(pixmap, make_pix_type(pixmap.inq_samples_per_pixel(), 8), Alpha::STRAIGHT);
    for (int y = 0; y < pixmap.inq_height(); ++y)
        to = packer.put_row(to, rows.inq_row(y));
    return to;
}

/// By the size that it tells itself, its frame, how many samples it has and its end.
bool PictWriter::is_whole(const WrittenFile& file, const PictureForm& form) const
{
    constexpr std::size_t SAMPLES_PLACE = FREE_BYTES + 88;
    unsigned char start[10];
    BigEndian out(start);
    out.put_16(static_cast<unsigned>(file.inq_size() - FREE_BYTES));
    put_frame(out, form.width, form.height);
    unsigned char samples[2], end[2];
    BigEndian(samples).put_16(static_cast<unsigned>(form.samples));
    BigEndian(end).put_16(END_CODE);
    return file.inq_size() > FREE_BYTES && file.has(FREE_BYTES, start) &&
           file.has(SAMPLES_PLACE, samples) && file.has(file.inq_size() - sizeof end, end);
}

KIVPixmapWriter::WriteError PictWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    if (pixmap.inq_width() < LEAST_WIDTH || pixmap.inq_width() > MOST_WIDTH ||
        pixmap.inq_height() > MOST_HEIGHT)
        return WRITE_WRONG_SIZE;
    const std::size_t row = RowPacker(pixmap).inq_most_bytes();
    char* memory = contents.reset(MOST_BYTES + row * static_cast<std::size_t>(pixmap.inq_height()));
    if (!memory)
        return WRITE_NO_MEMORY;
    auto* file = reinterpret_cast<unsigned char*>(memory);
    std::memset(file, 0, FREE_BYTES);
    BigEndian out(file + FREE_BYTES);
    put_picture_head(out, pixmap);
    put_pixel_head(out, pixmap);
    unsigned char* end = put_rows(out.inq_place(), pixmap);
    if ((end - file) % 2 != 0)
        *end++ = 0; // codes stand at even places
    end = BigEndian(end).put_16(END_CODE).inq_place();
    const std::ptrdiff_t size = end - file;
    BigEndian(file + FREE_BYTES).put_16(static_cast<unsigned>(size - FREE_BYTES));
    contents.set_size(static_cast<std::size_t>(size));
    return WRITE_OKAY;
}

[[maybe_unused]] const auto* const PICT_WRITER = new KIVPixmapWriterDescriptor(
    "PictWriter", [](int /*variant*/) -> gsl::owner<KIVPixmapWriter*> { return new PictWriter; });
} // namespace
