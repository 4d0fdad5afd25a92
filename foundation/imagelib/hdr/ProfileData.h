#pragma once

#include <vector>

/// The bytes of a colour profile, as they stand in a file of its own or in a picture; empty for
/// none.
using ProfileData = std::vector<unsigned char>;

/// More is no profile, and not read.
inline constexpr unsigned LARGEST_PROFILE = 16U << 20;
