#pragma once

#include <cstdlib>
#include <new>

// Included in one source of a test program, this replaces `operator new`, for its libraries too.

inline long allocations_left = -1; // that succeed, until one fails; negative: none fails

inline void* allocate(std::size_t bytes)
{
    const bool is_to_fail = allocations_left >= 0 && allocations_left-- == 0;
    return is_to_fail ? nullptr : std::malloc(bytes);
}

[[gnu::noinline]] void* operator new(std::size_t bytes)
{
    void* const memory = allocate(bytes);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return allocate(bytes);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

/// Runs the operation, of which one allocation fails. False if it makes fewer than `before + 1`.
template <class Operation> bool lacks_memory_after(long before, Operation operation)
{
    allocations_left = before;
    operation();
    const bool has_lacked = allocations_left < 0;
    allocations_left = -1;
    return has_lacked;
}
