#pragma once

#include <chrono>

/// How far a run is, on the error console: a bar that moves if that is a terminal, and else a line
/// every few seconds.
class Progress {
public:
    Progress();
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Some may have been done before.
    void begin(int frames, int done = 0);
    void add_frame() { set_done(n_done + 1); }
    void set_done(int frames);

    /// Makes room for other words on the terminal.
    void hide();

private:
    using Clock = std::chrono::steady_clock;

    void show(Clock::time_point now);

    const bool is_terminal;
    bool is_shown = false;
    int n_frames = 0;
    int n_done = 0;
    int n_done_before = 0;
    Clock::time_point start;
    Clock::time_point shown_at;
};
