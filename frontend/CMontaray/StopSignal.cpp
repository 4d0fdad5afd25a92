#include "frontend/CMontaray/StopSignal.h"

#include "frontend/CMontaray/exit_codes.h"

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <initializer_list>
#include <sys/stat.h>
#include <unistd.h>

namespace {
volatile std::sig_atomic_t our_signal = 0;
volatile std::time_t our_time = 0;
pid_t our_process = 0; // not those that it starts
int our_nowhere = -1;  // where words go that nobody may be waiting for

/// A pipe or a terminal may not be read.
bool may_hang(int descriptor)
{
    struct stat facts {};
    return ::fstat(descriptor, &facts) == 0 && !S_ISREG(facts.st_mode);
}

void note_signal(int signal)
{
    constexpr std::time_t PATIENCE = 2;
    const std::time_t now = std::time(nullptr);
    if (our_signal != 0 && now - our_time >= PATIENCE && ::getpid() == our_process)
        ::_exit(SIGNAL_BASE + signal); // something hangs
    if (our_signal != 0)
        return;
    our_time = now;
    our_signal = signal;
    for (const int console : {STDOUT_FILENO, STDERR_FILENO})
        if (our_nowhere >= 0 && may_hang(console))
            ::dup2(our_nowhere, console);
}
} // namespace

void StopSignal::watch()
{
    constexpr int SIGNALS[] = {SIGINT, SIGTERM};
    our_process = ::getpid();
    our_nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::signal(SIGPIPE, SIG_IGN);
    struct sigaction action {};
    action.sa_handler = note_signal; // without SA_RESTART: a wait ends
    for (const int signal : SIGNALS)
        ::sigaddset(&action.sa_mask, signal);
    for (const int signal : SIGNALS) {
        struct sigaction old {};
        ::sigaction(signal, nullptr, &old);
        if (old.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

int StopSignal::inq_signal()
{
    return our_signal;
}
