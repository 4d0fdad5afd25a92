#include "frontend/CMontaray/JobPool.h"
#include "frontend/CMontaray/Options.h"
#include "frontend/CMontaray/RenderRun.h"
#include "frontend/CMontaray/RunReport.h"
#include "frontend/CMontaray/exit_codes.h"
#include "frontend/CMontaray/list_references.h"
#include "kivlib/hdr/montaray_version.h"
#include "render/hdr/CommandOutput.h"

#include <cstring>
#include <iostream>

namespace {
int run_alone(CommandOutput& output, const Options& options, FrameQueue& queue, RunReport& report)
{
    RenderRun run(options, queue, 0, {}, report);
    return output.perform_output(run);
}

/// Each process may keep as many pictures as one alone: the limit also chooses the copy of a large
/// picture that is shown, and that must not depend on the number of processes.
int run_together(const CommandOutput& output, const Options& options, FrameQueue& queue,
                 RunReport& report)
{
    const JobWork work = [&](int job, const std::vector<int>& first_places, RunListener& listener) {
        CommandOutput their_output = output;
        RenderRun run(options, queue, job, first_places, listener);
        return their_output.perform_output(run);
    };
    JobPool pool(queue, output.inq_settings().output_dir.str(), work, report);
    return pool.run(options.jobs);
}

int refuse(const std::string& reason)
{
    std::cerr << "CMontaray: " << reason << '\n';
    return CommandOutput::BAD_USAGE;
}

int render(const Options& options)
{
    CommandOutput output;
    const std::vector<char*>& words = options.words;
    const int result = output.use_command_line_args(static_cast<int>(words.size()), words.data());
    if (result != CommandOutput::SUCCESS)
        return result;
    if (options.file_type)
        output.set_file_type(*options.file_type);
    set_tiff_compression(options.tiff_compression);
    FrameQueue queue(options.jobs);
    RunReport report(options, output);
    if (!queue.is_usable())
        return refuse("There is no memory to share.");
    if (!report.is_good())
        return refuse("Can't write to '" + options.log_file + "'.");
    StopSignal::watch();
    return report.finish(options.jobs == 1 ? run_alone(output, options, queue, report)
                                           : run_together(output, options, queue, report));
}
} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!options.read(argc, argv))
        return options.mistake;
    if (options.help || options.version) {
        std::cout << (options.help ? OPTIONS_HELP : "CMontaray " MONTARAY_VERSION "\n");
        return CommandOutput::SUCCESS;
    }
    const std::vector<char*>& words = options.words;
    if (words.size() > 2 && std::strcmp(words[1], "list_refs") == 0)
        return list_references(options);
    return render(options);
}
