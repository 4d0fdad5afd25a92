#include "frontend/CMontaray/StopSignal.h"

#include <csignal>
#include <initializer_list>

namespace {
volatile std::sig_atomic_t our_signal = 0;

void note_signal(int signal)
{
    our_signal = signal;
}
} // namespace

void StopSignal::watch()
{
    struct sigaction action {};
    action.sa_handler = note_signal; // without SA_RESTART: a wait ends
    for (const int signal : {SIGINT, SIGTERM})
        ::sigaction(signal, &action, nullptr);
}

int StopSignal::inq_signal()
{
    return our_signal;
}
