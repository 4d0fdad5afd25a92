#pragma once

#include <cstddef>
#include <memory>

/// Compresses blocks of bytes, each to a whole zlib stream, with no more effort than pays. The same
/// block comes out the same each time; without vectors, it comes out otherwise.
class ZlibPacker {
public:
    enum Way { FASTEST, WITHOUT_VECTORS };

    explicit ZlibPacker(Way way = FASTEST);
    ZlibPacker(const ZlibPacker&) = delete;
    ZlibPacker& operator=(const ZlibPacker&) = delete;
    ~ZlibPacker();

    /// The longest block.
    static constexpr std::size_t LONGEST = std::size_t{1} << 31;

    /// The most that `count` bytes can become.
    static std::size_t inq_most(std::size_t count);

    /// How many bytes were put to `to`, which has room for the most. 0 without memory.
    std::size_t pack(const void* from, std::size_t count, void* to);

private:
    struct Vectors;
    struct Plain;
    std::unique_ptr<Vectors> vectors; // for the fastest way, where the processor is made for it
    std::unique_ptr<Plain> plain;     // else
};
