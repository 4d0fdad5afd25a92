#include "kivlib/hdr/BinOStream.h"

namespace {
constexpr int ALL_MAY_READ_AND_WRITE = 0666; // less what the process masks out
}

BinOStream::BinOStream(const char* path, int is_anew, int permissions)
    : GeneralOStream(path, permissions < 0 ? ALL_MAY_READ_AND_WRITE : permissions)
{
    if (is_anew != 1)
        set_error(CANT_OPEN, "a file is only written anew");
}
