#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cerrno>

/// What the user is told where there is no picture for want of memory.
inline constexpr char WANT_OF_MEMORY[] = "not enough memory";

/// Whether the text tells that the process lacked something, so that the next attempt with the
/// same file may go better.
inline bool is_want_of_memory(const KIVString& error)
{
    return error.contains(WANT_OF_MEMORY) || error.contains(std::strerror(EMFILE)) ||
           error.contains(std::strerror(ENOMEM));
}
