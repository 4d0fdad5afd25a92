#pragma once

#include <cstdint>
#include <cstring>

/// Bytes of a file into which numbers are put with their greatest byte first, one after the other
/// or at a place counted from the beginning.
class BigEndian {
public:
    explicit BigEndian(unsigned char* start) : start(start), at(start) {}

    BigEndian& operator()(std::size_t place)
    {
        at = start + place;
        return *this;
    }

    BigEndian& put_8(unsigned value)
    {
        *at++ = static_cast<unsigned char>(value);
        return *this;
    }
    BigEndian& put_16(unsigned value) { return put_8(value >> 8).put_8(value); }
    BigEndian& put_32(unsigned value) { return put_16(value >> 16).put_16(value); }
    BigEndian& put_float(float value)
    {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof(bits));
        return put_32(bits);
    }
    BigEndian& put_text(const char* text)
    {
        const std::size_t length = std::strlen(text);
        std::memcpy(at, text, length);
        at += length;
        return *this;
    }

    unsigned char* inq_place() const { return at; }

private:
    unsigned char* start; // not owned
    unsigned char* at;
};
