#include "kivlib/hdr/BinOStream.h"

#include <cerrno>

namespace {
constexpr int ALL_MAY_READ_AND_WRITE = 0666; // less what the process masks out

/// A file is only written anew.
FileHandle open_anew(const char* path, int is_anew, int permissions)
{
    if (is_anew == 1)
        return FileHandle::open_to_write(path,
                                         permissions < 0 ? ALL_MAY_READ_AND_WRITE : permissions);
    errno = EINVAL;
    return {};
}
} // namespace

BinOStream::BinOStream(const char* path, int is_anew, int permissions)
    : GeneralOStream(path, open_anew(path, is_anew, permissions))
{}

BinOStream::BinOStream(const char* path, FileHandle opened)
    : GeneralOStream(path, std::move(opened), LEAVES_SYNCING)
{}
