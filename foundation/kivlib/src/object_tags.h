#pragma once

#include <cstdint>

// What stands before an object in a stream.
enum ObjectTag : std::uint16_t {
    NULL_OBJECT,
    SEEN_OBJECT,     // then its number
    FORWARD_OBJECT,  // then its class: it takes the next number, its record comes later
    ARRIVING_OBJECT, // then its number, its class, and its record
    FIRST_CLASS      // this and above: a new object of the class of that index, and its record
};
