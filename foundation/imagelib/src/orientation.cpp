#include "imagelib/src/orientation.h"

#include "imagelib/hdr/KIVPixmap.h"

namespace {
/// Numbers of 2 and 4 bytes in the order that the block tells. What lies outside of it is 0.
class ExifBlock {
public:
    explicit ExifBlock(std::span<const unsigned char> bytes)
        : bytes(bytes), is_big_endian(!bytes.empty() && bytes[0] == 'M')
    {}

    std::size_t inq_short(std::size_t at) const { return inq_number(at, 2); }
    std::size_t inq_long(std::size_t at) const { return inq_number(at, 4); }

private:
    std::size_t inq_number(std::size_t at, std::size_t size) const
    {
        if (at > bytes.size() || bytes.size() - at < size)
            return 0;
        std::size_t number = 0;
        for (std::size_t i = 0; i < size; ++i)
            number = number << 8 | bytes[at + (is_big_endian ? i : size - 1 - i)];
        return number;
    }

    std::span<const unsigned char> bytes;
    bool is_big_endian;
};
} // namespace

int find_exif_orientation(std::span<const unsigned char> exif)
{
    constexpr std::size_t FIRST_DIRECTORY = 4;
    constexpr std::size_t ENTRY_BYTES = 12;
    constexpr std::size_t VALUE = 8; // its place in an entry
    constexpr std::size_t ORIENTATION = 0x112;
    const ExifBlock block(exif);
    const std::size_t directory = block.inq_long(FIRST_DIRECTORY);
    const std::size_t count = block.inq_short(directory);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + i * ENTRY_BYTES;
        if (block.inq_short(entry) == ORIENTATION)
            return static_cast<int>(block.inq_short(entry + VALUE));
    }
    return 1;
}

namespace {
/// Where the first pixel comes to, and from there the steps to the next of its row and of its
/// column, in pixels and rows.
struct Turn {
    bool from_right; // in the upright picture
    bool from_bottom;
    bool on_its_side;

    explicit Turn(int orientation)
        : from_right(orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7),
          from_bottom(orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8),
          on_its_side(is_on_its_side(orientation))
    {}
};

template <class Pixel> void turn(KIVPixmap& out, const KIVPixmap& picture, const Turn& turn)
{
    const auto row_step = static_cast<std::ptrdiff_t>(out.inq_row_bytes() / sizeof(Pixel));
    const std::ptrdiff_t across = turn.from_right ? -1 : 1;
    const std::ptrdiff_t down = turn.from_bottom ? -row_step : row_step;
    auto* to_row =
        reinterpret_cast<Pixel*>(out.inq_row(turn.from_bottom ? out.inq_height() - 1 : 0)) +
        (turn.from_right ? out.inq_width() - 1 : 0);
    for (int y = 0; y < picture.inq_height(); ++y, to_row += turn.on_its_side ? across : down) {
        const auto* from = reinterpret_cast<const Pixel*>(picture.inq_row(y));
        Pixel* to = to_row;
        for (int x = 0; x < picture.inq_width(); ++x, to += turn.on_its_side ? down : across)
            *to = *from++;
    }
}
} // namespace

std::unique_ptr<KIVPixmap> make_upright(const KIVPixmap& picture, int orientation)
{
    const Turn how(orientation);
    const int width = how.on_its_side ? picture.inq_height() : picture.inq_width();
    const int height = how.on_its_side ? picture.inq_width() : picture.inq_height();
    auto out = std::make_unique<KIVPixmap>(width, height, picture.inq_type(), nullptr, false);
    if (!out->inq_data())
        return nullptr;
    if (picture.inq_bits_per_sample() == 8)
        turn<std::uint32_t>(*out, picture, how);
    else
        turn<std::uint64_t>(*out, picture, how);
    return out;
}
