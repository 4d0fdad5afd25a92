#pragma once

#include <cstddef>

// What is done to whole rows on their way into a file or out of it. Rows don't overlap, but where
// it is said.

/// The first `distance` bytes as they are, and from there on the difference of each sample to the
/// one `distance` bytes before it. `bits` is 8 or 16.
void put_differences(void* to, const void* from, std::size_t bytes, std::size_t distance, int bits);

/// Takes that back. The rows may be the same.
void add_differences(void* to, const void* from, std::size_t bytes, std::size_t distance, int bits);

/// Divides the colours of pixels with alpha by it, rounded. A clear pixel has no colour.
void make_straight(void* to, const void* from, int pixels, int bits);

/// Exchanges the first and the third of the 3 or 4 samples of 8 bits that a pixel has.
void swap_red_and_blue(void* to, const void* from, int pixels, int samples);

/// Exchanges the two bytes of each sample of 16 bits.
void swap_bytes(void* to, const void* from, std::size_t samples);
