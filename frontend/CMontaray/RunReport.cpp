#include "frontend/CMontaray/RunReport.h"

#include "frontend/CMontaray/Options.h"
#include "frontend/CMontaray/StopSignal.h"
#include "frontend/CMontaray/exit_codes.h"
#include "frontend/CMontaray/outcomes.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "render/hdr/CommandOutput.h"

#include <iostream>
#include <unistd.h>

RunReport::Consoles::Consoles()
{
    if (!progress.is_bar())
        return;
    if (::isatty(STDOUT_FILENO) == 1)
        coutp = &output;
    cerrp = &errors;
}

RunReport::Consoles::~Consoles()
{
    coutp = old_output;
    cerrp = old_errors;
}

RunReport::RunReport(const Options& options, const CommandOutput& output)
    : options(options), output(output), log(options.log_file),
      start(std::chrono::steady_clock::now())
{
    if (options.progress)
        consoles.emplace();
}

void RunReport::begun(const std::vector<int>& frames)
{
    const OutputSettings& settings = output.inq_settings();
    log.put_started(settings.scene_file.str(), settings.output_dir.str(), options.jobs,
                    frames.size());
    if (consoles)
        consoles->progress.begin(static_cast<int>(frames.size()));
}

/// A process that was lost could not tell which file it was about to write.
void RunReport::frame_ended(const FrameEvent& event)
{
    FrameEvent whole = event;
    if (!event.loss.empty())
        whole.report.file = output.inq_frame_path(event.report.frame);
    tell(whole);
}

void RunReport::tell(const FrameEvent& event)
{
    *coutp << event.said.c_str();
    if (!options.dry_run)
        log.put_frame(event);
    note_faults(event);
    n_done += !options.dry_run && inq_failure(event).empty() ? 1 : 0;
    if (!consoles)
        return;
    if (event.report.outcome == FrameReport::LEFT_OUT)
        consoles->progress.add_old_frame();
    else
        consoles->progress.add_frame();
}

void RunReport::note_faults(const FrameEvent& event)
{
    const std::string frame = "frame " + std::to_string(event.report.frame) + ": ";
    const std::string failure = inq_failure(event);
    if (!failure.empty() && (options.strict || !event.loss.empty()))
        faults.push_back(frame + failure);
    for (int i = 0; i < event.report.no_images.count(); ++i)
        faults.push_back(frame + event.report.no_images.at_index(i).str());
    has_lost_frames |= !event.loss.empty();
    has_missing_images |= event.report.no_images.count() > 0;
}

int RunReport::finish(int result)
{
    consoles.reset();
    coutp->flush();
    for (const std::string& fault : faults)
        std::cerr << "CMontaray: " << fault << '\n';
    int code = inq_code(result);
    if (code == CommandOutput::SUCCESS && options.dry_run && std::ferror(stdout))
        code = NOT_ALL_TOLD;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    log.put_finished(code, n_done, time.count());
    if (log.is_good())
        return code;
    std::cerr << "CMontaray: The log can't be written to its end.\n";
    return code == CommandOutput::SUCCESS ? static_cast<int>(NOT_ALL_TOLD) : code;
}

int RunReport::inq_code(int result) const
{
    if (StopSignal::inq_signal() != 0)
        return SIGNAL_BASE + StopSignal::inq_signal();
    if (result != CommandOutput::SUCCESS)
        return result;
    if (has_lost_frames)
        return FRAMES_LOST;
    if (options.strict && !faults.empty())
        return NOT_STRICT;
    if (options.dry_run && has_missing_images)
        return FILE_MISSING;
    return CommandOutput::SUCCESS;
}
