#include "modules/farm/hdr/Child.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
using Clock = std::chrono::steady_clock;

constexpr int STEP = 1000; // milliseconds; the end of a child cuts it short
constexpr std::chrono::seconds TIME_TO_CLEAR_UP{10};

sigset_t make_set(std::initializer_list<int> signals)
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : signals)
        ::sigaddset(&set, signal);
    return set;
}

int our_stop = 0;

/// What the program starts with.
class Beginning {
public:
    Beginning()
    {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        const sigset_t none = make_set({});
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    }
    Beginning(const Beginning&) = delete;
    Beginning& operator=(const Beginning&) = delete;
    ~Beginning()
    {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

/// -1 if the program could not be started.
pid_t start(const std::vector<std::string>& arguments)
{
    std::vector<char*> words; // the system wants writable ones, and does not write them
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const Beginning beginning;
    pid_t pid = -1;
    const int error = ::posix_spawn(&pid, words[0], &beginning.actions, &beginning.attributes,
                                    words.data(), environ);
    return error == 0 ? pid : -1;
}

int to_result(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : Child::SIGNAL_BASE + WTERMSIG(status);
}
} // namespace

void HeldSignals::hold()
{
    const sigset_t held = make_set({SIGTERM, SIGINT, SIGCHLD});
    ::sigprocmask(SIG_BLOCK, &held, nullptr);
}

int HeldSignals::wait(int milliseconds)
{
    constexpr int SECOND = 1000;
    constexpr long NANOSECONDS = 1'000'000;
    const timespec time{milliseconds / SECOND, milliseconds % SECOND * NANOSECONDS};
    const sigset_t held = make_set({SIGTERM, SIGINT, SIGCHLD});
    const int signal = ::sigtimedwait(&held, nullptr, &time);
    if (signal == SIGTERM || signal == SIGINT)
        our_stop = signal;
    return our_stop;
}

int HeldSignals::inq_stop()
{
    const sigset_t stops = make_set({SIGTERM, SIGINT});
    const timespec at_once{};
    const int signal = our_stop ? 0 : ::sigtimedwait(&stops, nullptr, &at_once);
    if (signal > 0)
        our_stop = signal;
    return our_stop;
}

int Child::run(const std::vector<std::string>& arguments)
{
    const pid_t pid = start(arguments);
    if (pid < 0)
        return NOT_STARTED;
    Clock::time_point killed_at = Clock::time_point::max();
    bool is_told = false;
    int status = 0;
    while (::waitpid(pid, &status, WNOHANG) == 0) {
        if (const int stop = HeldSignals::wait(STEP); stop != 0 && !is_told) {
            ::kill(pid, stop);
            is_told = true;
            killed_at = Clock::now() + TIME_TO_CLEAR_UP;
        }
        if (Clock::now() > killed_at)
            ::kill(pid, SIGKILL);
    }
    return to_result(status);
}
