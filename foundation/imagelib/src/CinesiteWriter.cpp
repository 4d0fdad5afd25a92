#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/src/BigEndian.h"
#include "imagelib/src/FileRows.h"
#include "imagelib/src/WrittenFile.h"
#include "kivlib/hdr/ByteBuffer.h"

namespace {
/// How a frame lies on the film. The scanning pitch is that of 6 micrometres, or of 12 for the half
/// sizes.
struct FilmFormat {
    const char* name;
    bool is_half;
};
constexpr FilmFormat FILM_FORMATS[] = {
    {"Academy", false},     {"Academy", true},        {"Cinemascope", false},
    {"Cinemascope", true},  {"Full aperture", false}, {"Full aperture", true},
    {"VistaVision", false}, {"VistaVision", true},
};

/// Cineon: printing densities of 10 bits, three to a word of 32. What is transparent is black.
class CinesiteWriter : public KIVPixmapWriter {
public:
    explicit CinesiteWriter(const FilmFormat& format) : format(format) {}

protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return "cin"; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;

private:
    void put_head(unsigned char* file, int width, int height) const;

    const FilmFormat& format;
};

/// Places in the head.
enum Place {
    FILE_HEAD = 0,
    VERSION = 24,
    IMAGE_HEAD = 192,
    FIRST_CHANNEL = 196,
    CHROMATICITIES = 420,
    DATA_FORMAT = 680,
    ORIGIN = 712,
    DEVICE = 844,
    PITCH = 972,
    FILM_HEAD = 1024,
    FILM_FORMAT = 1036,
    FRAME_POSITION = 1068,
    HEAD_BYTES = 2048
};

constexpr unsigned UNKNOWN_8 = 0xFF;
constexpr unsigned UNKNOWN_32 = 0xFFFFFFFF;
constexpr float UNKNOWN_FLOAT = std::numeric_limits<float>::infinity();

constexpr unsigned MOST_CODE = 1023;
constexpr double MOST_DENSITY = 2.046; // of that code: 0.002 to a code

void put_file_head(BigEndian& out, std::size_t file_bytes)
{
    constexpr unsigned MARK = 0x802A5FD7;
    constexpr unsigned HALF = HEAD_BYTES / 2;
    out(FILE_HEAD).put_32(MARK).put_32(HEAD_BYTES).put_32(HALF).put_32(HALF).put_32(0);
    out.put_32(static_cast<std::uint32_t>(file_bytes));
    out(VERSION).put_text("V4.5");
}

void put_image_head(BigEndian& out, int width, int height)
{
    constexpr unsigned CHANNELS = 3;
    out(IMAGE_HEAD).put_8(0).put_8(CHANNELS); // from left to right and from the top
    out(FIRST_CHANNEL);
    for (unsigned colour = 1; colour <= CHANNELS; ++colour) { // red, green and blue density
        out.put_8(0).put_8(colour).put_8(10).put_8(0);
        out.put_32(static_cast<unsigned>(width)).put_32(static_cast<unsigned>(height));
        out.put_float(0.0F).put_float(0.0F);
        out.put_float(MOST_CODE).put_float(static_cast<float>(MOST_DENSITY));
    }
    out(CHROMATICITIES);
    for (int i = 0; i < 8; ++i) // white and the primaries
        out.put_float(UNKNOWN_FLOAT);
}

void put_data_format(BigEndian& out)
{
    constexpr unsigned LEFT_IN_WORDS_OF_32_BITS = 5;
    out(DATA_FORMAT).put_8(0).put_8(LEFT_IN_WORDS_OF_32_BITS).put_8(0).put_8(0);
    out.put_32(0).put_32(0); // nothing between lines and channels
}

void put_origin(BigEndian& out, const FilmFormat& format)
{
    constexpr float SAMPLES_PER_MILLIMETRE = 1000.0F / 6.0F;
    const float pitch = format.is_half ? SAMPLES_PER_MILLIMETRE / 2 : SAMPLES_PER_MILLIMETRE;
    constexpr float NO_GAMMA = 1.0F;
    out(ORIGIN).put_32(0).put_32(0);
    out(DEVICE).put_text("montaraystore");
    out(PITCH).put_float(pitch).put_float(pitch).put_float(NO_GAMMA);
}

void put_film_head(BigEndian& out, const FilmFormat& format)
{
    out(FILM_HEAD).put_8(UNKNOWN_8).put_8(UNKNOWN_8).put_8(UNKNOWN_8).put_8(0);
    out.put_32(UNKNOWN_32).put_32(UNKNOWN_32);
    out(FILM_FORMAT).put_text(format.name);
    out(FRAME_POSITION).put_32(UNKNOWN_32).put_float(UNKNOWN_FLOAT);
}

using CodeTable = std::array<std::uint16_t, 0x10000>;

/// The density of a negative for each level of 16 bits: white at 685, black at 95, between them the
/// logarithm of the level by a film gamma of 0.6.
CodeTable make_code_table()
{
    constexpr double WHITE = 685.0;
    constexpr double BLACK = 95.0;
    constexpr double CODES_PER_DECADE = 0.6 / 0.002;
    const double least = std::pow(10.0, (BLACK - WHITE) / CODES_PER_DECADE);
    CodeTable table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double level = static_cast<double>(i) / (table.size() - 1);
        const double code = WHITE + CODES_PER_DECADE * std::log10(least + (1.0 - least) * level);
        table[i] = static_cast<std::uint16_t>(std::lround(code));
    }
    return table;
}

const CodeTable& inq_code_table()
{
    static const CodeTable table = make_code_table();
    return table;
}

void put_row(unsigned char* to, const std::uint16_t* from, int pixels)
{
    const CodeTable& code = inq_code_table();
    for (int x = 0; x < pixels; ++x, to += 4, from += 3) {
        const std::uint32_t red = code[from[0]];
        const std::uint32_t green = code[from[1]];
        const std::uint32_t blue = code[from[2]];
        BigEndian(to).put_32(red << 22 | green << 12 | blue << 2);
    }
}

std::size_t inq_file_bytes(int width, int height)
{
    constexpr std::size_t BYTES_PER_PIXEL = 4;
    return HEAD_BYTES +
           BYTES_PER_PIXEL * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

void CinesiteWriter::put_head(unsigned char* file, int width, int height) const
{
    std::memset(file, 0, HEAD_BYTES);
    BigEndian head(file);
    put_file_head(head, inq_file_bytes(width, height));
    put_image_head(head, width, height);
    put_data_format(head);
    put_origin(head, format);
    put_film_head(head, format);
}

bool CinesiteWriter::is_whole(const WrittenFile& file, const PictureForm& form) const
{
    std::vector<unsigned char> head(HEAD_BYTES);
    put_head(head.data(), form.width, form.height);
    return file.inq_size() == inq_file_bytes(form.width, form.height) && file.has(0, head);
}

KIVPixmapWriter::WriteError CinesiteWriter::encode(const KIVPixmap& pixmap, ByteBuffer& contents)
{
    const std::size_t row_bytes = 4 * static_cast<std::size_t>(pixmap.inq_width());
    const std::size_t size = inq_file_bytes(pixmap.inq_width(), pixmap.inq_height());
    char* memory = contents.reset(size);
    if (!memory)
        return WRITE_NO_MEMORY;
    auto* file = reinterpret_cast<unsigned char*>(memory);
    put_head(file, pixmap.inq_width(), pixmap.inq_height());
    FileRows rows(pixmap, PT_RGB_16, Alpha::PREMULTIPLIED);
    unsigned char* to = file + HEAD_BYTES;
    for (int y = 0; y < pixmap.inq_height(); ++y, to += row_bytes)
        put_row(to, reinterpret_cast<const std::uint16_t*>(rows.inq_row(y)), pixmap.inq_width());
    return WRITE_OKAY;
}

gsl::owner<KIVPixmapWriter*> new_cinesite_writer(int variant)
{
    const bool is_known = variant >= 0 && variant < static_cast<int>(std::size(FILM_FORMATS));
    return is_known ? new CinesiteWriter(FILM_FORMATS[variant]) : nullptr;
}

[[maybe_unused]] const auto* const CINESITE_WRITER =
    new KIVPixmapWriterDescriptor("CinesiteWriter", new_cinesite_writer);
} // namespace
