#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

/// Growing bytes that are never cleared before they are written. Out of memory raises a flag, and
/// what is added then is lost.
class ByteBuffer {
public:
    ByteBuffer() = default;
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer();

    char* data() { return bytes; }
    const char* data() const { return bytes; }
    std::size_t size() const { return used; }
    std::size_t capacity() const { return allocated; }
    bool has_failed() const { return failed; }

    /// Forgets the contents and makes room for `n` bytes that the caller fills.
    char* reset(std::size_t n)
    {
        used = 0;
        return extend(n);
    }

    /// Room for `n` bytes more at the end, or null.
    char* extend(std::size_t n)
    {
        if (!make_room(n))
            return nullptr;
        return bytes + std::exchange(used, used + n);
    }

    void append(const void* from, std::size_t n)
    {
        char* at = extend(n);
        if (at && n)
            std::memcpy(at, from, n);
    }

    /// Makes the capacity at least `n` more than the size. False without memory.
    bool make_room(std::size_t n) { return allocated - used >= n || grow(used + n); }

    /// Takes up to `n` bytes, within the capacity, for the contents.
    void set_size(std::size_t n) { used = n; }

private:
    bool grow(std::size_t wanted);
    char* move_to(char* memory);
    void release();

    char* bytes = nullptr; // owned
    std::size_t used = 0;
    std::size_t allocated = 0;
    bool failed = false;
};
