#include "xsheet/store_control/hdr/FolderLock.h"

#include <cerrno>
#include <sys/file.h>
#include <thread>

namespace {
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds PAUSE(10);
milliseconds patience(10'000);

FolderLock::Result try_lock(const FileHandle& folder, FolderLock::Kind kind)
{
    const int operation = kind == FolderLock::SHARED ? LOCK_SH : LOCK_EX;
    if (::flock(folder.inq_descriptor(), operation | LOCK_NB) == 0)
        return FolderLock::HELD;
    return errno == EWOULDBLOCK || errno == EINTR ? FolderLock::BUSY : FolderLock::UNSUPPORTED;
}
} // namespace

void FolderLock::set_patience(milliseconds most)
{
    patience = most;
}

FolderLock::Result FolderLock::take(const KIVString& folder, Kind kind)
{
    release();
    FileHandle opened = FileHandle::open_folder(folder.c_str());
    if (!opened.is_open())
        return UNSUPPORTED;
    const Clock::time_point end = Clock::now() + patience;
    Result result = try_lock(opened, kind);
    while (result == BUSY && Clock::now() < end) {
        std::this_thread::sleep_for(PAUSE);
        result = try_lock(opened, kind);
    }
    if (result == HELD)
        file = std::move(opened);
    return result;
}

void FolderLock::share() const
{
    if (file.is_open())
        ::flock(file.inq_descriptor(), LOCK_SH | LOCK_NB);
}

void FolderLock::release()
{
    file.close();
}
