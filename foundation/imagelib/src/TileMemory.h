#pragma once

#include <cstddef>

/// The pixels of a tile. Large ones come from the system and go back to it: in the heap, tiles that
/// are dropped here and there would leave gaps that a frame doesn't fit into.
class TileMemory {
public:
    /// Empty without memory.
    explicit TileMemory(std::size_t bytes);
    TileMemory(const TileMemory&) = delete;
    TileMemory& operator=(const TileMemory&) = delete;
    ~TileMemory();

    unsigned char* inq_data() const { return data; }

private:
    bool is_of_system() const;

    std::size_t bytes;
    unsigned char* data = nullptr; // owned
};
