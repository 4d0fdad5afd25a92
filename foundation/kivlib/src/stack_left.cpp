#include "kivlib/hdr/stack_left.h"

#include <pthread.h>

namespace {
constexpr std::uintptr_t RESERVE = 512 * 1024; // for what runs below the deepest nesting

std::uintptr_t find_lowest_address()
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0)
        return 0;
    void* lowest = nullptr;
    std::size_t size = 0;
    pthread_attr_getstack(&attributes, &lowest, &size);
    pthread_attr_destroy(&attributes);
    return reinterpret_cast<std::uintptr_t>(lowest);
}
} // namespace

bool is_stack_low()
{
    thread_local const std::uintptr_t lowest = find_lowest_address();
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < lowest + RESERVE;
}
