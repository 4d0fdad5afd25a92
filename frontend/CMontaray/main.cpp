#include "frontend/CMontaray/Options.h"
#include "frontend/CMontaray/RenderRun.h"
#include "frontend/CMontaray/RunReport.h"
#include "frontend/CMontaray/exit_codes.h"
#include "frontend/CMontaray/list_references.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/montaray_version.h"
#include "kivlib/hdr/prepare_process.h"
#include "render/hdr/CommandOutput.h"

#include <cstring>
#include <iostream>

namespace {
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
    const KIVString folder = inq_absolute_path(output.inq_settings().output_dir);
    RenderRun run(options, queue, folder.str(), report);
    return report.finish(output.perform_output(run));
}
} // namespace

int main(int argc, char** argv)
{
    prepare_process();
    Options options;
    if (!options.read(argc, argv))
        return options.mistake;
    if (options.help || options.version) {
        std::cout << (options.help ? OPTIONS_HELP : "CMontaray " MONTARAY_VERSION "\n");
        return std::cout.flush() ? static_cast<int>(CommandOutput::SUCCESS) : NOT_ALL_TOLD;
    }
    const std::vector<char*>& words = options.words;
    const bool is_list = words.size() > 1 && std::strcmp(words[1], "list_refs") == 0;
    if (!options.check_form(is_list))
        return options.mistake;
    return is_list && words.size() > 2 ? list_references(options) : render(options);
}
