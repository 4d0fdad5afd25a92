#include "kivlib/hdr/FileHandle.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {
template <class Call> auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}
} // namespace

KIVString inq_system_error()
{
    return std::strerror(errno);
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    std::swap(descriptor, other.descriptor);
    return *this;
}

FileHandle::~FileHandle()
{
    close();
}

namespace {
FileHandle open_with(const char* path, int flags, int permissions = 0)
{
    return FileHandle(uninterrupted([&] { return ::open(path, flags | O_CLOEXEC, permissions); }));
}
} // namespace

// A pipe that nobody writes is opened at once, and can then be refused.
FileHandle FileHandle::open_to_read(const char* path)
{
    return open_with(path, O_RDONLY | O_NONBLOCK);
}

FileHandle FileHandle::open_the_file_itself(const char* path)
{
    return open_with(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
}

FileHandle FileHandle::open_folder(const char* path)
{
    return open_with(path, O_RDONLY | O_DIRECTORY);
}

FileHandle FileHandle::open_to_write(const char* path, int permissions)
{
    return open_with(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, permissions);
}

FileHandle FileHandle::create(const char* path, int permissions)
{
    return open_with(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, permissions);
}

bool FileHandle::read_all(char* to, std::size_t size) const
{
    while (size > 0) {
        const ssize_t n = uninterrupted([&] { return ::read(descriptor, to, size); });
        if (n == 0)
            errno = EIO; // the file ends too early
        if (n <= 0)
            return false;
        to += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool FileHandle::write_all(const char* from, std::size_t size) const
{
    while (size > 0) {
        const ssize_t n = uninterrupted([&] { return ::write(descriptor, from, size); });
        if (n == 0)
            errno = ENOSPC; // it would never end
        if (n <= 0)
            return false;
        from += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool FileHandle::rewind_and_empty() const
{
    return ::lseek(descriptor, 0, SEEK_SET) == 0 &&
           uninterrupted([&] { return ::ftruncate(descriptor, 0); }) == 0;
}

bool FileHandle::sync() const
{
    return uninterrupted([&] { return ::fsync(descriptor); }) == 0;
}

bool FileHandle::close()
{
    return descriptor < 0 || ::close(std::exchange(descriptor, -1)) == 0;
}

// A file system that answers EINVAL keeps no names that could wait.
bool sync_folder(const KIVString& path)
{
    const FileHandle folder = FileHandle::open_folder(path.c_str());
    return folder.is_open() && (folder.sync() || errno == EINVAL);
}
