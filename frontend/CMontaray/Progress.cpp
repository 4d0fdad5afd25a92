#include "frontend/CMontaray/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace {
constexpr int BAR_WIDTH = 30;
constexpr std::chrono::milliseconds BAR_PAUSE{100};
constexpr std::chrono::seconds LINE_PAUSE{5};
constexpr char CLEAR_LINE[] = "\r\033[K";

std::string make_bar(int n_done, int n_frames)
{
    const int full = n_frames > 0 ? static_cast<int>(1LL * BAR_WIDTH * n_done / n_frames) : 0;
    return "[" + std::string(static_cast<std::size_t>(full), '#') +
           std::string(static_cast<std::size_t>(BAR_WIDTH - full), '.') + "] ";
}

std::string make_clock(double seconds)
{
    constexpr long MINUTE = 60;
    const long whole = std::lround(seconds);
    const std::string rest = std::to_string(whole % MINUTE);
    return std::to_string(whole / MINUTE) + (rest.size() < 2 ? ":0" : ":") + rest;
}
} // namespace

Progress::Progress() : is_terminal(::isatty(STDERR_FILENO) == 1), process(::getpid()) {}

void Progress::begin(int frames, int done)
{
    n_frames = frames;
    n_done = n_done_before = done;
    start = shown_at = Clock::now();
    if (is_terminal || n_done == n_frames)
        show(start);
}

void Progress::set_done(int done, int frames)
{
    const bool is_news = done != n_done || frames != n_frames;
    n_done = done;
    n_frames = std::max(done, frames);
    const Clock::time_point now = Clock::now();
    const auto pause = is_terminal ? Clock::duration(BAR_PAUSE) : Clock::duration(LINE_PAUSE);
    if (n_done == n_frames ? is_news : now - shown_at >= pause)
        show(now);
}

void Progress::add_old_frame()
{
    ++n_done_before;
    add_frame();
}

/// Nothing can be told before a frame is done.
std::string Progress::make_forecast(Clock::time_point now) const
{
    const std::chrono::duration<double> time = now - start;
    if (n_done <= n_done_before || time.count() <= 0.0)
        return "";
    const double rate = (n_done - n_done_before) / time.count();
    char text[64];
    std::snprintf(text, sizeof text, ", %.1f a second, ", rate);
    return text + make_clock((n_frames - n_done) / rate) + " left";
}

void Progress::show(Clock::time_point now)
{
    std::fflush(stdout);
    std::fprintf(stderr, "%s%s%d of %d frames%s%s", is_terminal ? CLEAR_LINE : "",
                 is_terminal ? make_bar(n_done, n_frames).c_str() : "", n_done, n_frames,
                 make_forecast(now).c_str(), is_terminal && n_done < n_frames ? "" : "\n");
    is_shown = is_terminal && n_done < n_frames;
    shown_at = now;
}

/// A process that was started meanwhile can't know whether there is a bar.
void Progress::hide()
{
    if (is_shown || (is_terminal && ::getpid() != process))
        std::fputs(CLEAR_LINE, stderr);
    is_shown = false;
}

void Progress::write(std::FILE* console, const char* text, std::size_t n)
{
    if (n == 0)
        return;
    hide();
    std::fwrite(text, 1, n, console);
    const bool is_whole_line = text[n - 1] == '\n';
    if (is_whole_line && n_done < n_frames && ::getpid() == process)
        show(Clock::now());
}
