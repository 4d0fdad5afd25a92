#pragma once

#include <array>
#include <cstddef>

/// Large blocks of memory from the system. The last ones that are given back are kept, within
/// limits, as the next frame is likely to need blocks of the same sizes.
class SystemMemory {
public:
    SystemMemory() = default;
    SystemMemory(const SystemMemory&) = delete;
    SystemMemory& operator=(const SystemMemory&) = delete;
    ~SystemMemory() { drop_all(); }

    /// A block of at least so many bytes with anything in it; `bytes` becomes its size. Null
    /// without memory.
    void* take(std::size_t& bytes);
    void give_back(void* block, std::size_t bytes);

private:
    struct Block {
        void* memory;
        std::size_t bytes;
    };
    static constexpr std::size_t MOST_BLOCKS = 32;

    void* take_kept(std::size_t& bytes);
    void* take_largest(std::size_t& bytes);
    bool keep(const Block& block);
    void remove(Block* block);
    void drop_oldest();
    void drop_largest();
    void drop_all();

    Block largest = {};                  // one that is too large to be kept beside others
    std::array<Block, MOST_BLOCKS> kept; // the oldest first
    std::size_t count = 0;
    std::size_t kept_bytes = 0;
};

/// That of the process.
SystemMemory& inq_system_memory();
