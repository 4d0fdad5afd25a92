#pragma once

#include <cstddef>

/// Brings `bytes` from `from`, which may be null, towards the processor while it does other work.
[[gnu::always_inline]] inline void fetch(const void* from, std::size_t bytes)
{
    constexpr std::size_t LINE = 64;
    for (std::size_t at = 0; at < bytes; at += LINE)
        __builtin_prefetch(static_cast<const char*>(from) + at);
}
