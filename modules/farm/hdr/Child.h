#pragma once

#include <string>
#include <vector>

/// SIGTERM and SIGINT, held back so that a program can clear up before it ends.
class HeldSignals {
public:
    /// From now on. Programs that are started get them as ever.
    static void hold();

    /// The one that has come; 0: none yet.
    static int inq_stop();

    /// Waits until one comes or a child ends, at most this long. Gives `inq_stop`.
    static int wait(int milliseconds);
};

/// Runs a program to its end, however long it takes, without input and with the output of this
/// one. A signal that stops this one is passed on, and after a while the program is killed.
class Child {
public:
    static constexpr int NOT_STARTED = -1;
    static constexpr int SIGNAL_BASE = 128; // and the number of the signal that ended it

    /// Gives the exit code or one of those above.
    static int run(const std::vector<std::string>& arguments);
};
