#include "tests/faults/FaultyDisc.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>

// The functions of the C library that change or read a disc stand here once more. Those of the
// program win over those of its libraries, so all calls come by, and go on to the next of the name.

namespace fs = std::filesystem;

namespace {
constexpr std::array CALL_NAMES = {"open",   "read", "write",    "sync", "close",  "rename",
                                   "unlink", "make", "truncate", "lock", "inspect"};

struct Disc {
    std::string folder;
    std::array<int, DISC_CALLS.size()> counts{};
    std::map<int, std::string> open_files; // by descriptor
    std::vector<DiscStep> steps;
    Fault fault{DiscCall::OPEN, 0, Fault::REFUSE};
    bool has_fired = false;
    int lock_error = 0;
};

Disc* disc = nullptr; // null while nobody watches
} // namespace

const char* inq_name(DiscCall call)
{
    return CALL_NAMES[static_cast<std::size_t>(call)];
}

std::string Fault::inq_words() const
{
    constexpr std::array MANNERS = {"fails",
                                    "fails for good",
                                    "kills the disc",
                                    "writes half",
                                    "writes half, the next fails",
                                    "killed before",
                                    "killed behind"};
    std::string words = std::string(inq_name(call)) + " " + std::to_string(nth) + " " +
                        MANNERS[static_cast<std::size_t>(manner)];
    return error ? words + ": " + std::strerror(error) : words;
}

void FaultyDisc::watch(const std::string& folder)
{
    leave_alone();
    auto watched = std::make_unique<Disc>();
    watched->folder = folder;
    disc = watched.release();
}

void FaultyDisc::leave_alone()
{
    delete std::exchange(disc, nullptr);
}

void FaultyDisc::arm(const Fault& fault)
{
    disc->fault = fault;
    disc->has_fired = false;
    disc->counts = {};
}

void FaultyDisc::refuse_locks(int error)
{
    disc->lock_error = error;
}

bool FaultyDisc::has_fired()
{
    return disc && disc->has_fired;
}

const std::vector<DiscStep>& FaultyDisc::inq_steps()
{
    return disc->steps;
}

namespace {
/// Of a path below the folder that is watched, what follows it; the folder itself is ".".
bool is_watched(const std::string& path, std::string* inside)
{
    if (!disc || !path.starts_with(disc->folder))
        return false;
    const std::string rest = path.substr(disc->folder.size());
    if (!rest.empty() && rest[0] != '/')
        return false;
    *inside = rest.size() > 1 ? rest.substr(1) : ".";
    return true;
}

std::string place_of(int folder)
{
    std::error_code error;
    const fs::path place = folder == AT_FDCWD
                               ? fs::current_path(error)
                               : fs::read_symlink("/proc/self/fd/" + std::to_string(folder), error);
    return place.string();
}

/// A path of a call, and whether it counts.
struct Path {
    Path(const char* path, int folder = AT_FDCWD)
    {
        if (!disc)
            return;
        const fs::path whole = *path == '/' ? fs::path(path) : fs::path(place_of(folder)) / path;
        std::string normal = whole.lexically_normal().string();
        if (normal.size() > 1 && normal.back() == '/')
            normal.pop_back();
        counts = is_watched(normal, &inside);
    }

    bool counts = false;
    std::string inside;
};

bool is_watched(int descriptor)
{
    return disc && disc->open_files.contains(descriptor);
}

[[noreturn]] void die()
{
    ::kill(::getpid(), SIGKILL);
    std::abort();
}

enum class Verdict { PASS, REFUSE, HALF, DIE_BEHIND };

bool is_refused_by_an_earlier_one(DiscCall call)
{
    const Fault& fault = disc->fault;
    if (!disc->has_fired)
        return false;
    if (fault.manner == Fault::DISC_DIES)
        return true;
    return fault.call == call && (fault.manner == Fault::REFUSE_FROM_NOW ||
                                  fault.manner == Fault::WRITE_HALF_THEN_REFUSE);
}

Verdict fire(const Fault& fault)
{
    disc->has_fired = true;
    errno = fault.error;
    switch (fault.manner) {
    case Fault::KILL_BEFORE:
        die();
    case Fault::KILL_AFTER:
        return Verdict::DIE_BEHIND;
    case Fault::WRITE_HALF:
    case Fault::WRITE_HALF_THEN_REFUSE:
        return Verdict::HALF;
    default:
        return Verdict::REFUSE;
    }
}

Verdict judge(DiscCall call)
{
    const int n = ++disc->counts[static_cast<std::size_t>(call)];
    if (call == DiscCall::LOCK && disc->lock_error) {
        errno = disc->lock_error;
        return Verdict::REFUSE;
    }
    if (is_refused_by_an_earlier_one(call)) {
        errno = disc->fault.error;
        return Verdict::REFUSE;
    }
    if (disc->fault.call == call && disc->fault.nth == n)
        return fire(disc->fault);
    return Verdict::PASS;
}

void go_on_from(Verdict verdict)
{
    if (verdict == Verdict::DIE_BEHIND)
        die();
}

void note(DiscStep step)
{
    disc->steps.push_back(std::move(step));
}

/// Makes a call that leaves no trace, unless a fault comes in between. -1 is its failure.
template <class Call> auto pass(bool counts, DiscCall kind, Call call) -> decltype(call())
{
    if (!counts)
        return call();
    const Verdict verdict = judge(kind);
    if (verdict == Verdict::REFUSE)
        return -1;
    const auto result = call();
    go_on_from(verdict);
    return result;
}

/// As `pass`, for a call that gives 0 and changes the disc.
template <class Call> int change(bool counts, DiscCall kind, Call call, DiscStep step)
{
    return pass(counts, kind, [&] {
        const int result = call();
        if (counts && result == 0)
            note(std::move(step));
        return result;
    });
}

template <class Function> Function* next(const char* name, Function*)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

#define NEXT(function) static auto* const next_##function = next(#function, &::function)

bool is_there(int folder, const char* path)
{
    struct stat facts {};
    return ::fstatat(folder, path, &facts, AT_SYMLINK_NOFOLLOW) == 0;
}

void note_opening(const Path& path, int descriptor, int flags, bool is_new)
{
    disc->open_files[descriptor] = path.inside;
    if ((flags & O_ACCMODE) == O_RDONLY && !is_new)
        return note({.kind = DiscStep::OPENED, .path = path.inside, .descriptor = descriptor});
    note({.kind = DiscStep::OPENED,
          .path = path.inside,
          .descriptor = descriptor,
          .is_new = is_new});
    if (flags & O_TRUNC)
        note({.kind = DiscStep::TRUNCATED, .path = path.inside, .descriptor = descriptor});
}

int open_in(int folder, const char* name, int flags, mode_t mode)
{
    NEXT(openat);
    const Path path(name, folder);
    if (!path.counts)
        return next_openat(folder, name, flags, mode);
    return pass(true, DiscCall::OPEN, [&] {
        const bool is_new = (flags & O_CREAT) && !is_there(folder, name);
        const int descriptor = next_openat(folder, name, flags, mode);
        if (descriptor >= 0)
            note_opening(path, descriptor, flags, is_new);
        return descriptor;
    });
}

void note_writing(int descriptor, std::int64_t at, const void* from, ssize_t size)
{
    if (size > 0)
        note({.kind = DiscStep::WROTE,
              .path = disc->open_files[descriptor],
              .descriptor = descriptor,
              .at = at,
              .bytes = {static_cast<const char*>(from), static_cast<std::size_t>(size)}});
}

/// `call` writes so many bytes.
template <class Call>
ssize_t write_by(int descriptor, std::int64_t at, const void* from, std::size_t size, Call call)
{
    const Verdict verdict = judge(DiscCall::WRITE);
    if (verdict == Verdict::REFUSE)
        return -1;
    const bool is_short = verdict == Verdict::HALF && size > 1;
    const ssize_t result = call(is_short ? size / 2 : size);
    note_writing(descriptor, at, from, result);
    go_on_from(verdict);
    return result;
}

int sync_by(int descriptor)
{
    return change(
        true, DiscCall::SYNC, [] { return 0; },
        {.kind = DiscStep::SYNCED, .path = disc->open_files[descriptor], .descriptor = descriptor});
}

/// A file is closed even when that reports an error.
template <class Call> int close_by(int descriptor, Call call)
{
    const Verdict verdict = judge(DiscCall::CLOSE);
    const int error = errno;
    disc->open_files.erase(descriptor);
    const int result = call();
    go_on_from(verdict);
    if (verdict != Verdict::REFUSE)
        return result;
    errno = error;
    return -1;
}
} // namespace

extern "C" {
// The mode is there only where a file may be made.
#define TAKE_MODE(mode)                                                                            \
    va_list arguments;                                                                             \
    va_start(arguments, flags);                                                                    \
    const mode_t mode = (flags & O_CREAT) ? va_arg(arguments, mode_t) : 0;                         \
    va_end(arguments)

int open(const char* path, int flags, ...)
{
    TAKE_MODE(mode);
    return open_in(AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...)
{
    TAKE_MODE(mode);
    return open_in(folder, path, flags, mode);
}

ssize_t read(int descriptor, void* to, size_t size)
{
    NEXT(read);
    return pass(is_watched(descriptor), DiscCall::READ,
                [&] { return next_read(descriptor, to, size); });
}

ssize_t write(int descriptor, const void* from, size_t size)
{
    NEXT(write);
    if (!is_watched(descriptor))
        return next_write(descriptor, from, size);
    return write_by(descriptor, ::lseek(descriptor, 0, SEEK_CUR), from, size,
                    [&](std::size_t n) { return next_write(descriptor, from, n); });
}

ssize_t writev(int descriptor, const struct iovec* pieces, int count)
{
    NEXT(writev);
    if (!is_watched(descriptor))
        return next_writev(descriptor, pieces, count);
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<const char*>(pieces[i].iov_base), pieces[i].iov_len);
    return ::write(descriptor, bytes.data(), bytes.size());
}

int fsync(int descriptor)
{
    return is_watched(descriptor) ? sync_by(descriptor) : 0;
}

int close(int descriptor)
{
    NEXT(close);
    const auto call = [&] { return next_close(descriptor); };
    return is_watched(descriptor) ? close_by(descriptor, call) : call();
}

int rename(const char* from, const char* to) noexcept
{
    NEXT(rename);
    const Path source(from);
    const Path target(to);
    return change(source.counts || target.counts, DiscCall::RENAME,
                  [&] { return next_rename(from, to); },
                  {.kind = DiscStep::RENAMED, .path = source.inside, .new_path = target.inside});
}

int link(const char* from, const char* to) noexcept
{
    NEXT(link);
    const Path source(from);
    const Path target(to);
    return change(source.counts || target.counts, DiscCall::MAKE,
                  [&] { return next_link(from, to); },
                  {.kind = DiscStep::LINKED, .path = source.inside, .new_path = target.inside});
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    NEXT(unlinkat);
    const Path path(name, folder);
    return change(path.counts, DiscCall::UNLINK, [&] { return next_unlinkat(folder, name, flags); },
                  {.kind = DiscStep::UNLINKED, .path = path.inside});
}

int unlink(const char* path) noexcept
{
    return unlinkat(AT_FDCWD, path, 0);
}

int remove(const char* path) noexcept
{
    const int result = unlink(path);
    return result != 0 && errno == EISDIR ? unlinkat(AT_FDCWD, path, AT_REMOVEDIR) : result;
}

int mkdir(const char* name, mode_t mode) noexcept
{
    NEXT(mkdir);
    const Path path(name);
    return change(path.counts, DiscCall::MAKE, [&] { return next_mkdir(name, mode); },
                  {.kind = DiscStep::MADE_FOLDER, .path = path.inside});
}

int ftruncate(int descriptor, off_t size) noexcept
{
    NEXT(ftruncate);
    const bool counts = is_watched(descriptor);
    return change(counts, DiscCall::TRUNCATE, [&] { return next_ftruncate(descriptor, size); },
                  {.kind = DiscStep::TRUNCATED,
                   .path = counts ? disc->open_files[descriptor] : "",
                   .descriptor = descriptor,
                   .at = size});
}

int flock(int descriptor, int operation) noexcept
{
    NEXT(flock);
    return pass(is_watched(descriptor), DiscCall::LOCK,
                [&] { return next_flock(descriptor, operation); });
}

int stat(const char* name, struct stat* facts) noexcept
{
    NEXT(stat);
    return pass(Path(name).counts, DiscCall::INSPECT, [&] { return next_stat(name, facts); });
}

int lstat(const char* name, struct stat* facts) noexcept
{
    NEXT(lstat);
    return pass(Path(name).counts, DiscCall::INSPECT, [&] { return next_lstat(name, facts); });
}

int fstat(int descriptor, struct stat* facts) noexcept
{
    NEXT(fstat);
    return pass(is_watched(descriptor), DiscCall::INSPECT,
                [&] { return next_fstat(descriptor, facts); });
}
}
