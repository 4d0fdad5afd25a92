#pragma once

#include "kivlib/hdr/ConsoleOStream.h"

#include <chrono>
#include <sys/types.h>

/// How far a run is, on the error console: a bar that stays if that is a terminal, and else a line
/// every few seconds.
class Progress {
public:
    Progress();
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    bool is_bar() const { return is_terminal; }

    /// Some may have been done before.
    void begin(int frames, int done = 0);
    void add_frame() { set_done(n_done + 1); }
    void set_done(int frames) { set_done(frames, n_frames); }

    /// More of them may be wanted by now.
    void set_done(int done, int frames);

    /// One that took no time, as it was there already.
    void add_old_frame();

    /// Writes other words on a console, above the bar.
    void write(std::FILE* console, const char* text, std::size_t n);

private:
    using Clock = std::chrono::steady_clock;

    void show(Clock::time_point now);
    void hide();
    std::string make_forecast(Clock::time_point now) const;

    const bool is_terminal;
    const pid_t process; // that shows the bar: not those that it starts
    bool is_shown = false;
    int n_frames = 0;
    int n_done = 0;
    int n_done_before = 0;
    Clock::time_point start;
    Clock::time_point shown_at;
};

/// A console whose words stand above the bar.
class ProgressConsole : public TextOStream {
public:
    /// Both outlive it.
    ProgressConsole(Progress& progress, std::FILE* console) : progress(progress), console(console)
    {}

    void flush() override { std::fflush(console); }

protected:
    void write_text(const char* text, std::size_t n) override { progress.write(console, text, n); }

private:
    Progress& progress;
    std::FILE* console;
};
