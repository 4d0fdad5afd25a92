#pragma once

#include <cstddef>
#include <cstdint>

// What stands before an object in a stream.
enum ObjectTag : std::uint16_t {
    NULL_OBJECT,
    SEEN_OBJECT,     // then its number
    FORWARD_OBJECT,  // then its class: it takes the next number, its record comes later
    ARRIVING_OBJECT, // then its number, its class, and its record
    FIRST_CLASS      // this and above: a new object of the class of that index, and its record
};

/// How long the length of a new object's record is: the two high bits of its tag, in containers
/// that have short lengths.
enum LengthForm : std::uint16_t { LENGTH_32 = 0, LENGTH_16 = 0x4000, LENGTH_8 = 0x8000 };
constexpr std::uint16_t LENGTH_FORMS = 0xc000;

constexpr std::size_t width_of(LengthForm form)
{
    return form == LENGTH_8 ? 1 : form == LENGTH_16 ? 2 : 4;
}

constexpr LengthForm narrowest_form(std::size_t length)
{
    return length <= UINT8_MAX ? LENGTH_8 : length <= UINT16_MAX ? LENGTH_16 : LENGTH_32;
}
