#pragma once

#include <cstddef>
#include <string>

/// Bytes to be written. The array refers to them and owns nothing.
class UCharArray {
public:
    UCharArray(const void* bytes, std::size_t size)
        : bytes(static_cast<const unsigned char*>(bytes)), size(size)
    {}

    const unsigned char* inq_bytes() const { return bytes; }
    std::size_t inq_size() const { return size; }

private:
    const unsigned char* bytes;
    std::size_t size;
};

/// Where a stream puts the bytes that it reads: the text of a string, replaced as a whole.
class WritableUCharArray {
public:
    explicit WritableUCharArray(std::string& bytes) : bytes(bytes) {}

    void assign(const char* from, std::size_t size) { bytes.assign(from, size); }

private:
    std::string& bytes;
};
