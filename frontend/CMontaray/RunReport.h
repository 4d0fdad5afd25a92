#pragma once

#include "frontend/CMontaray/EventLog.h"
#include "frontend/CMontaray/Progress.h"

#include <optional>

class CommandOutput;
struct Options;

/// What the user is told of a run: the words of its frames, the progress, the log, and at the end
/// what was wanting.
class RunReport : public RunListener {
public:
    RunReport(const Options& options, const CommandOutput& output);

    /// False if the log can't be written.
    bool is_good() const { return log.is_good(); }

    void begun(const std::vector<int>& frames) override;
    void frame_ended(const FrameEvent& event) override;

    /// Gives the exit code of a run that ended with `result`.
    int finish(int result);

private:
    /// A bar needs to know of all other words.
    struct Consoles {
        Consoles();
        ~Consoles();
        Consoles(const Consoles&) = delete;
        Consoles& operator=(const Consoles&) = delete;

        Progress progress;
        ProgressConsole output{progress, stdout};
        ProgressConsole errors{progress, stderr};
        KIVOStream* const old_output = coutp; // not owned, nor the next
        KIVOStream* const old_errors = cerrp;
    };

    void tell(const FrameEvent& event);
    void note_faults(const FrameEvent& event);
    int inq_code(int result) const;

    const Options& options;
    const CommandOutput& output;
    EventLog log;
    std::optional<Consoles> consoles;
    std::vector<std::string> faults;
    bool has_lost_frames = false;
    bool has_missing_images = false;
    int n_done = 0;
    std::chrono::steady_clock::time_point start;
};
