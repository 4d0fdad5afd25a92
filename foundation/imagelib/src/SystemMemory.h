#pragma once

#include <array>
#include <cstddef>

/// Blocks of memory that nobody uses at the moment, within limits: the oldest go first.
class IdleBlocks {
public:
    struct Block {
        void* memory;
        std::size_t bytes;
    };

    /// At most so many blocks, and bytes in them.
    IdleBlocks(std::size_t most_blocks, std::size_t most_bytes)
        : most_blocks(most_blocks), most_bytes(most_bytes)
    {}
    IdleBlocks(const IdleBlocks&) = delete;
    IdleBlocks& operator=(const IdleBlocks&) = delete;
    ~IdleBlocks() { drop_all(); }

    /// The smallest that will do for so many bytes, unless too much of it would lie idle. Its
    /// memory is null if there is none.
    Block take(std::size_t bytes);

    /// Gives the block back to the system if it is larger than all may be.
    void put(const Block& block);
    void drop_all();

private:
    static constexpr std::size_t ROOM = 32;

    void remove(Block* block);
    void drop_oldest();

    const std::size_t most_blocks; // up to ROOM
    const std::size_t most_bytes;
    std::array<Block, ROOM> blocks; // the oldest first
    std::size_t count = 0;
    std::size_t sum = 0; // of their bytes
};

/// Large blocks of memory from the system. The last ones that are given back are kept, as the next
/// frame is likely to need blocks of the same sizes.
class SystemMemory {
public:
    /// A block of at least so many bytes with anything in it; `bytes` becomes its size. Null
    /// without memory.
    void* take(std::size_t& bytes);
    void give_back(void* block, std::size_t bytes);

private:
    static constexpr std::size_t LARGE = std::size_t{64} << 20;

    IdleBlocks& blocks_like(std::size_t bytes) { return bytes > LARGE ? large : small; }

    IdleBlocks small{32, LARGE};
    IdleBlocks large{2, 4 * LARGE}; // such as a frame that is drawn, and its final form
};

/// That of the process.
SystemMemory& inq_system_memory();
