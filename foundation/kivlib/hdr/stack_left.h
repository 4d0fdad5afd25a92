#pragma once

#include <cstdint>

/// The address below which nothing should nest deeper on the calling thread's stack.
std::uintptr_t inq_stack_floor();

inline bool is_stack_below(std::uintptr_t floor)
{
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < floor;
}
