#pragma once

#include <cstddef>
#include <cstdint>

// The outer form of a stream of objects; docs/format/object_stream.md tells it in full.
namespace container {

constexpr char MAGIC[8] = {'K', 'I', 'V', 'O', 'B', 'J', 'S', '\n'};
constexpr int FIRST_VERSION = 1;
constexpr int SHORT_LENGTHS = 2; // the version since which records may have short lengths
constexpr int VERSION = SHORT_LENGTHS;
constexpr std::size_t MOST_CLASSES = 0x3f00;

/// The start of the file; class table, objects and checksum follow.
struct Header {
    char magic[8];
    std::uint32_t version;
    std::uint32_t class_count;
    std::uint64_t class_table_size; // in bytes
    std::uint64_t objects_size;     // in bytes
};
static_assert(sizeof(Header) == 32);

} // namespace container
