#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

/// Growing bytes that are never cleared before they are written. Out of memory raises a flag, and
/// what is added then is lost.
class ByteBuffer {
public:
    char* data() { return bytes.get(); }
    const char* data() const { return bytes.get(); }
    std::size_t size() const { return used; }
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
        if (allocated - used < n && !grow(used + n))
            return nullptr;
        char* at = bytes.get() + used;
        used += n;
        return at;
    }

    void append(const void* from, std::size_t n)
    {
        char* at = extend(n);
        if (at && n)
            std::memcpy(at, from, n);
    }

    void shrink_to(std::size_t n) { used = n; }

private:
    struct Free {
        void operator()(char* memory) const { std::free(memory); }
    };

    bool grow(std::size_t wanted)
    {
        const std::size_t size = wanted > 2 * allocated ? wanted : 2 * allocated;
        char* memory = static_cast<char*>(std::realloc(bytes.get(), size));
        failed = failed || !memory;
        if (!memory)
            return false;
        static_cast<void>(bytes.release()); // realloc has freed or moved it
        bytes.reset(memory);
        allocated = size;
        return true;
    }

    std::unique_ptr<char, Free> bytes;
    std::size_t used = 0;
    std::size_t allocated = 0;
    bool failed = false;
};
