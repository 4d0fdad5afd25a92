#pragma once

#include <cerrno>

/// What the user is told where there is no picture for want of memory.
inline constexpr char WANT_OF_MEMORY[] = "not enough memory";

/// Whether the last call that failed did so for a reason that may pass while the file stays as it
/// is. False while `errno` is 0, and for what the file's own state tells.
inline bool has_failed_for_now()
{
    switch (errno) {
    case 0:
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
    case EINVAL: // also where the file is no regular one
    case ELOOP:
    case ENAMETOOLONG:
        return false;
    default:
        return true;
    }
}
