#pragma once

#include <cstddef>
#include <cstdint>

// The outer form of a stream of objects; docs/format/object_stream.md tells it in full.
namespace container {

constexpr char MAGIC[8] = {'K', 'I', 'V', 'O', 'B', 'J', 'S', '\n'};
constexpr int VERSION = 1;
constexpr std::size_t MOST_CLASSES = 0xff00;

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
