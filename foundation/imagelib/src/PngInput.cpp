#include "imagelib/src/PngInput.h"

#include "imagelib/src/BigEndian.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

namespace {
// Of a chunk.
constexpr std::size_t HEAD = 8; // its length and its name
constexpr std::size_t CHECKSUM = 4;

// Of a file's first chunk, which the format's library has found to be sound when it asks for the
// samples.
constexpr std::size_t NAME = 12;
constexpr std::size_t WIDTH = 16;
constexpr std::size_t HEIGHT = 20;
constexpr std::size_t DEPTH = 24;
constexpr std::size_t COLOURS = 25;
constexpr std::size_t INTERLACE = 28;

// Of the stored form.
constexpr unsigned char ZLIB_HEAD[] = {0x78, 0x01};
constexpr std::size_t BLOCK_HEAD = 5;
constexpr std::uint64_t LONGEST_BLOCK = 0xFFFF;
constexpr std::uint64_t LONGEST_CHUNK = 0x7FFFFFFF;

constexpr const char* TOO_SHORT = "the PNG file ends too early";
constexpr const char* DAMAGED = "the samples of the PNG file are damaged";

unsigned count_channels(unsigned colours)
{
    constexpr unsigned PALETTE = 3;
    constexpr unsigned COLOUR = 2; // bits
    constexpr unsigned ALPHA = 4;
    if (colours == PALETTE)
        return 1;
    return (colours & COLOUR ? 3 : 1) + (colours & ALPHA ? 1 : 0);
}

/// The length of a chunk that holds so many bytes in stored blocks.
std::uint64_t count_stored(std::uint64_t samples)
{
    const std::uint64_t blocks = (samples + LONGEST_BLOCK - 1) / LONGEST_BLOCK;
    return sizeof(ZLIB_HEAD) + samples + blocks * BLOCK_HEAD + CHECKSUM;
}
} // namespace

PngInput::PngInput(Bytes file) : file(file) {}
PngInput::~PngInput() = default;

const char* PngInput::read(unsigned char* to, std::size_t count)
{
    if (stored_left > 0)
        return read_stored(to, count);
    return is_at_samples() ? begin_samples(to) : read_file(to, count);
}

/// The library makes room for a chunk before it asks for any of it, so one that ends behind the
/// file is refused with its head. That of the samples comes alone if just the head is wanted.
const char* PngInput::read_file(unsigned char* to, std::size_t count)
{
    if (file.size() - position < count)
        return TOO_SHORT;
    if (position == next_chunk && count == HEAD) {
        const std::size_t bytes = inq_32(position);
        if (!is_of_samples(position) && file.size() - position - HEAD < bytes)
            return TOO_SHORT;
        next_chunk += HEAD + bytes + CHECKSUM;
    }
    std::memcpy(to, file.data() + position, count);
    position += count;
    return nullptr;
}

std::uint32_t PngInput::inq_32(std::size_t place) const
{
    const unsigned char* at = file.data() + place;
    return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
           at[3];
}

bool PngInput::is_of_samples(std::size_t chunk) const
{
    return chunk + HEAD <= file.size() && std::memcmp(file.data() + chunk + 4, "IDAT", 4) == 0;
}

bool PngInput::is_at_samples() const
{
    return !unpacker && position == next_chunk && is_of_samples(position) &&
           file.size() > INTERLACE && std::memcmp(file.data() + NAME, "IHDR", 4) == 0 &&
           file[INTERLACE] == 0 && count_stored(count_samples()) <= LONGEST_CHUNK;
}

/// In bytes, with the byte before each row that tells how it is filtered.
std::uint64_t PngInput::count_samples() const
{
    const std::uint64_t bits =
        std::uint64_t{inq_32(WIDTH)} * file[DEPTH] * count_channels(file[COLOURS]);
    return inq_32(HEIGHT) * (1 + (bits + 7) / 8);
}

const char* PngInput::begin_samples(unsigned char* head)
{
    unpacker = std::make_unique_for_overwrite<inflate_state>();
    isal_inflate_init(unpacker.get());
    unpacker->crc_flag = ISAL_ZLIB;
    samples_left = count_samples();
    const std::uint64_t bytes = count_stored(samples_left);
    stored_left = bytes + CHECKSUM;
    BigEndian(head).put_32(static_cast<unsigned>(bytes)).put_text("IDAT");
    block.assign(std::begin(ZLIB_HEAD), std::end(ZLIB_HEAD));
    return nullptr;
}

const char* PngInput::read_stored(unsigned char* to, std::size_t count)
{
    stored_left -= count;
    while (count > 0) {
        const char* reason = given == block.size() ? make_block() : nullptr;
        if (reason)
            return reason;
        const std::size_t part = std::min(count, block.size() - given);
        std::memcpy(to, block.data() + given, part);
        given += part;
        to += part;
        count -= part;
    }
    return nullptr;
}

/// What follows the last one are two checksums.
const char* PngInput::make_block()
{
    given = 0;
    if (samples_left == 0) {
        block.assign(2 * CHECKSUM, 0);
        return end_samples();
    }
    const auto count = static_cast<std::uint32_t>(std::min(samples_left, LONGEST_BLOCK));
    samples_left -= count;
    block.resize(BLOCK_HEAD + count);
    block[0] = samples_left == 0;
    for (unsigned i = 0; i < 2; ++i) { // the lower byte first
        block[1 + i] = static_cast<unsigned char>(count >> (8 * i));
        block[3 + i] = static_cast<unsigned char>(~block[1 + i]);
    }
    const char* reason = unpack(block.data() + BLOCK_HEAD, count);
    return !reason && unpacker->avail_out > 0 ? TOO_SHORT : reason;
}

/// Until the room is full or the samples end, and their checksum is right.
const char* PngInput::unpack(unsigned char* to, std::uint32_t room)
{
    unpacker->next_out = to;
    unpacker->avail_out = room;
    for (;;) {
        const int result = isal_inflate(unpacker.get());
        if (result < 0 || result == ISAL_NEED_DICT)
            return DAMAGED;
        if (unpacker->avail_out == 0 || unpacker->block_state == ISAL_BLOCK_FINISH)
            return nullptr;
        const char* reason = unpacker->avail_in > 0 ? DAMAGED : open_chunk();
        if (reason)
            return reason;
    }
}

const char* PngInput::open_chunk()
{
    if (!is_of_samples(position))
        return file.size() - position < HEAD ? TOO_SHORT : DAMAGED;
    const std::size_t bytes = inq_32(position);
    if (file.size() - position < HEAD + CHECKSUM ||
        file.size() - position - HEAD - CHECKSUM < bytes)
        return TOO_SHORT;
    const unsigned char* name = file.data() + position + 4;
    position += HEAD + bytes;
    if (libdeflate_crc32(0, name, 4 + bytes) != inq_32(position))
        return DAMAGED;
    position += CHECKSUM;
    unpacker->next_in = const_cast<unsigned char*>(name + 4); // is only read
    unpacker->avail_in = static_cast<std::uint32_t>(bytes);
    return nullptr;
}

/// More samples than the picture has are nobody's loss, but have to be sound, too.
const char* PngInput::end_samples()
{
    unsigned char too_much[4096];
    const char* reason = nullptr;
    do
        reason = unpack(too_much, sizeof(too_much));
    while (!reason && unpacker->block_state != ISAL_BLOCK_FINISH);
    while (!reason && is_of_samples(position))
        reason = open_chunk();
    next_chunk = position;
    return reason;
}
