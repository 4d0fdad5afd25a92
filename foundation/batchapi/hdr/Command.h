#pragma once

#include "kivlib/hdr/KIVString.h"

#include <vector>

/// A program that is run to its end and listened to. It has no input, works in the root folder and
/// gets nothing of this process: no descriptor, no signal setting, no variable that is not told.
struct Command {
    static constexpr std::size_t MOST_TEXT = std::size_t(1) << 20;

    KIVString program;                  // a path, absolute
    std::vector<KIVString> arguments;   // behind the program; no shell reads them
    std::vector<KIVString> environment; // NAME=value
    int deadline_ms = 15000;            // then it is killed, with what it has started
    std::size_t most_text = MOST_TEXT;  // kept of its output, and of its errors
};

enum class CommandEnd {
    NOT_STARTED,
    WITH_RESULT,
    LATE,
    UNSEEN // the process waits for all its children elsewhere, or leaves them to the system
};

/// What became of a command.
struct CommandAnswer {
    /// Where nobody saw the result, it counts as good if no words say otherwise.
    bool is_good() const
    {
        return (end == CommandEnd::WITH_RESULT && result == 0) ||
               (end == CommandEnd::UNSEEN && errors.empty());
    }

    CommandEnd end = CommandEnd::NOT_STARTED;
    int result = 0;      // for NOT_STARTED the system's error; 128 and more for a signal
    std::string output;  // what it wrote until it ended, or until the deadline
    std::string errors;  // the same of its error stream
    bool is_cut = false; // there was more
};

/// Comes back when the program has ended, or about a second after the deadline at the latest.
/// What a program that ended in time has left running goes on. No other child of this process is
/// waited for, and the settings of its signals stay.
CommandAnswer run(const Command& command);

/// A program by its name in `path`, folders with colons between; empty if none has it. Folders
/// that are not absolute do not count.
KIVString find_program(const KIVString& name, const KIVString& path);
