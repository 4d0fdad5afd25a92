#include "frontend/CMontaray/Progress.h"

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

Progress::Progress() : is_terminal(::isatty(STDERR_FILENO) == 1) {}

void Progress::begin(int frames, int done)
{
    n_frames = frames;
    n_done = n_done_before = done;
    start = shown_at = Clock::now();
}

void Progress::set_done(int frames)
{
    n_done = frames;
    const Clock::time_point now = Clock::now();
    const bool is_due = is_terminal ? now - shown_at >= BAR_PAUSE : now - shown_at >= LINE_PAUSE;
    if (is_due || n_done == n_frames)
        show(now);
}

void Progress::show(Clock::time_point now)
{
    const std::chrono::duration<double> time = now - start;
    const double rate = time.count() > 0.0 ? (n_done - n_done_before) / time.count() : 0.0;
    const double left = rate > 0.0 ? (n_frames - n_done) / rate : 0.0;
    std::fflush(stdout);
    std::fprintf(stderr, "%s%s%d of %d frames, %.1f a second, %s left%s",
                 is_terminal ? CLEAR_LINE : "",
                 is_terminal ? make_bar(n_done, n_frames).c_str() : "", n_done, n_frames, rate,
                 make_clock(left).c_str(), is_terminal && n_done < n_frames ? "" : "\n");
    is_shown = is_terminal && n_done < n_frames;
    shown_at = now;
}

void Progress::hide()
{
    if (is_shown)
        std::fputs(CLEAR_LINE, stderr);
    is_shown = false;
}
