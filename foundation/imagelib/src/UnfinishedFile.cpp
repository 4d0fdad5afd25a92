#include "imagelib/src/UnfinishedFile.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

bool UnfinishedFile::create(const KIVString& final_path)
{
    constexpr int PERMISSIONS = 0666;
    path = final_path;
    own_path = path + "." + std::to_string(::getpid()).c_str() + "~";
    ::unlink(own_path.c_str()); // of a process that had our number and was killed
    handle = FileHandle(
        ::open(own_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, PERMISSIONS));
    if (!handle.is_open())
        own_path = KIVString();
    return handle.is_open();
}

bool UnfinishedFile::finish()
{
    if (!handle.sync() || !handle.close() || std::rename(own_path.c_str(), path.c_str()) != 0)
        return false;
    own_path = KIVString();
    return true;
}

UnfinishedFile::~UnfinishedFile()
{
    if (!own_path.is_null())
        ::unlink(own_path.c_str());
}
