#include "imagelib/src/PictureReader.h"
#include "imagelib/src/targa_format.h"

namespace {
int get_16_bits(Bytes bytes, std::size_t at)
{
    return bytes[at] | bytes[at + 1] << 8;
}

int bytes_of(int bits)
{
    return (bits + 7) / 8;
}

/// Targa with a palette, in colours or in greys, compressed or not.
class TargaReader : public PictureReader {
public:
    explicit TargaReader(Bytes file)
        : file(file), kind(file[targa::IMAGE_TYPE] & ~targa::COMPRESSED), depth(file[targa::DEPTH]),
          flags(file[targa::DESCRIPTOR])
    {}

    bool is_sane() const;
    bool read_head(PictureInfo& info) override;
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override;
    bool is_from_top() const override { return (flags & targa::FROM_TOP) != 0; }
    bool read_pixels(RowTarget& target) override;

private:
    bool is_compressed() const { return (file[targa::IMAGE_TYPE] & targa::COMPRESSED) != 0; }
    Alpha inq_alpha() const;
    bool has_foot() const;
    bool lacks_foot() const;
    int inq_map_depth() const { return file[targa::MAP_DEPTH]; }
    bool read_packet();
    bool read_row(unsigned char* row, int width);
    bool put_pixel(unsigned char* to, const unsigned char* from) const;
    static void put_colour(unsigned char* to, const unsigned char* from, int bits);

    Bytes file;
    int kind;
    int depth;
    int flags;
    std::size_t map_at = 0;
    std::size_t position = 0;
    int packet_left = 0; // pixels
    bool packet_repeats = false;
};

bool is_colour_depth(int bits)
{
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
}

bool TargaReader::is_sane() const
{
    const int map_type = file[targa::MAP_TYPE];
    const bool is_known_type = (file[targa::IMAGE_TYPE] & ~(targa::COMPRESSED | 3)) == 0;
    const bool is_sane_depth = kind == targa::MAPPED
                                   ? depth == 8 && map_type == 1 && is_colour_depth(inq_map_depth())
                               : kind == targa::TRUE_COLOUR ? is_colour_depth(depth)
                                                            : depth == 8;
    return is_known_type && kind != 0 && map_type <= 1 && is_sane_depth &&
           get_16_bits(file, targa::WIDTH) > 0 && get_16_bits(file, targa::HEIGHT) > 0;
}

bool TargaReader::has_foot() const
{
    if (file.size() < targa::HEAD_BYTES + targa::FOOT_BYTES)
        return false;
    const Bytes foot = file.last(targa::FOOT_BYTES);
    return std::memcmp(foot.data() + targa::SIGNATURE_AT, targa::SIGNATURE,
                       sizeof(targa::SIGNATURE)) == 0;
}

/// Behind the pixels, an extension area begins with its own size; without the foot it would not be
/// found, and alpha be misunderstood.
bool TargaReader::lacks_foot() const
{
    return file.size() - position >= 2 && get_16_bits(file, position) == targa::EXTENSION_BYTES &&
           !has_foot();
}

std::uint64_t TargaReader::inq_most_pixels(std::uint64_t file_bytes) const
{
    constexpr std::uint64_t LONGEST_PACKET = 128;
    const auto pixel_bytes = static_cast<std::uint64_t>(bytes_of(depth));
    return is_compressed() ? file_bytes * LONGEST_PACKET / (1 + pixel_bytes)
                           : file_bytes / pixel_bytes;
}

/// Alpha counts if the head gives it bits, unless the extension area says that it means nothing.
Alpha TargaReader::inq_alpha() const
{
    if (depth != 32 || kind != targa::TRUE_COLOUR || (flags & targa::ALPHA_BITS) != 8)
        return Alpha::NONE;
    if (!has_foot())
        return Alpha::STRAIGHT;
    const Bytes foot = file.last(targa::FOOT_BYTES);
    const std::size_t at = static_cast<std::size_t>(get_16_bits(foot, 0)) |
                           static_cast<std::size_t>(get_16_bits(foot, 2)) << 16;
    if (at == 0 || at + targa::EXTENSION_BYTES > file.size())
        return Alpha::STRAIGHT;
    switch (file[at + targa::ALPHA_KIND]) {
    case targa::STRAIGHT:
        return Alpha::STRAIGHT;
    case targa::PREMULTIPLIED:
        return Alpha::PREMULTIPLIED;
    default:
        return Alpha::NONE;
    }
}

bool TargaReader::read_head(PictureInfo& info)
{
    info.width = get_16_bits(file, targa::WIDTH);
    info.height = get_16_bits(file, targa::HEIGHT);
    map_at = targa::HEAD_BYTES + std::size_t{file[targa::ID_LENGTH]};
    const int map_bytes = file[targa::MAP_TYPE]
                              ? get_16_bits(file, targa::MAP_LENGTH) * bytes_of(inq_map_depth())
                              : 0;
    position = map_at + static_cast<std::size_t>(map_bytes);
    return position <= file.size() || fail("the Targa file ends too early");
}

void TargaReader::put_colour(unsigned char* to, const unsigned char* from, int bits)
{
    if (bits >= 24) {
        to[0] = from[2];
        to[1] = from[1];
        to[2] = from[0];
        to[3] = bits == 32 ? from[3] : 0xFF;
        return;
    }
    const int word = from[0] | from[1] << 8; // five bits to each colour
    for (int c = 0; c < 3; ++c) {
        const int level = word >> (10 - 5 * c) & 0x1F;
        to[c] = static_cast<unsigned char>(level << 3 | level >> 2);
    }
    to[3] = 0xFF;
}

bool TargaReader::put_pixel(unsigned char* to, const unsigned char* from) const
{
    if (kind == targa::TRUE_COLOUR) {
        put_colour(to, from, depth);
        return true;
    }
    if (kind == targa::GREY) {
        std::memset(to, *from, 3);
        to[3] = 0xFF;
        return true;
    }
    const int index = *from - get_16_bits(file, targa::MAP_FIRST);
    if (index < 0 || index >= get_16_bits(file, targa::MAP_LENGTH))
        return false;
    const int at = index * bytes_of(inq_map_depth());
    put_colour(to, file.data() + map_at + at, inq_map_depth());
    to[3] = 0xFF;
    return true;
}

/// The head of a run of equal pixels, or of different ones.
bool TargaReader::read_packet()
{
    if (position >= file.size())
        return false;
    const int head = file[position++];
    packet_left = (head & 0x7F) + 1;
    packet_repeats = (head & 0x80) != 0;
    return true;
}

bool TargaReader::read_row(unsigned char* row, int width)
{
    const auto pixel_bytes = static_cast<std::size_t>(bytes_of(depth));
    for (int x = 0; x < width; ++x, row += 4) {
        if (is_compressed() && packet_left == 0 && !read_packet())
            return false;
        if (file.size() - position < pixel_bytes || !put_pixel(row, file.data() + position))
            return false;
        if (is_compressed())
            --packet_left;
        if (!packet_repeats || packet_left == 0)
            position += pixel_bytes;
    }
    return true;
}

bool TargaReader::read_pixels(RowTarget& target)
{
    const int width = get_16_bits(file, targa::WIDTH);
    const int height = get_16_bits(file, targa::HEIGHT);
    const RowLayout layout = {4, 8, inq_alpha()};
    std::vector<unsigned char> row(static_cast<std::size_t>(width) * 4);
    for (int i = 0; i < height; ++i) {
        if (!read_row(row.data(), width))
            return fail("the Targa file ends too early, or is damaged");
        auto* pixels = reinterpret_cast<std::uint32_t*>(row.data());
        if (flags & targa::FROM_RIGHT)
            std::reverse(pixels, pixels + width);
        if (!target.put_row(is_from_top() ? i : height - 1 - i, row.data(), layout))
            return fail_by_target();
    }
    return !lacks_foot() || fail("the Targa file ends too early");
}
} // namespace

std::unique_ptr<PictureReader> make_targa_reader(Bytes file)
{
    if (file.size() < targa::HEAD_BYTES)
        return nullptr;
    auto reader = std::make_unique<TargaReader>(file);
    return reader->is_sane() ? std::move(reader) : nullptr;
}
