#pragma once

#include "imagelib/src/PictureReader.h"

#include <vector>

struct inflate_state;

/// The bytes of a PNG file as the format's library gets them. It would take most of its time to
/// unpack the samples, and can't be told of a quicker way. So they are unpacked here, and it gets
/// them in a chunk of blocks that are only stored; all else is as it lies in the file. The samples
/// of an interlaced picture are left to it, and those of 2 GB and more.
class PngInput {
public:
    /// The file, or its beginning, outlives this.
    explicit PngInput(Bytes file);
    PngInput(const PngInput&) = delete;
    PngInput& operator=(const PngInput&) = delete;
    ~PngInput();

    /// From the head of the samples on. The checksums of their chunks are looked at here, and those
    /// that the library gets mean nothing.
    bool has_stored_samples() const { return unpacker != nullptr; }

    /// Null, or why the bytes can't be had. Throws without memory.
    const char* read(unsigned char* to, std::size_t count);

private:
    const char* read_file(unsigned char* to, std::size_t count);
    bool is_at_samples() const;
    bool is_of_samples(std::size_t chunk) const;
    std::uint64_t count_samples() const;
    const char* begin_samples(unsigned char* head);
    const char* read_stored(unsigned char* to, std::size_t count);
    const char* make_block();
    const char* unpack(unsigned char* to, std::uint32_t room);
    const char* open_chunk();
    const char* end_samples();
    std::uint32_t inq_32(std::size_t place) const;

    static constexpr std::size_t MARK_BYTES = 8;

    const Bytes file;
    std::size_t position = 0;            // of what comes next, or of the next chunk of samples
    std::size_t next_chunk = MARK_BYTES; // where the library asks for the head of a chunk

    std::unique_ptr<inflate_state> unpacker; // null until the samples come
    std::uint64_t samples_left = 0;          // bytes that are still to be unpacked
    std::uint64_t stored_left = 0;           // and to be given, with all that is around them
    std::vector<unsigned char> block;
    std::size_t given = 0; // of the block
};
