#include "modules/farm/hdr/FarmJob.h"

#include "modules/farm/hdr/finger_prints.h"
#include "modules/farm/src/json.h"

#include <algorithm>
#include <ctime>

namespace {
constexpr int FORMAT = 1; // of the job file

Json to_json(const FrameSet& frames)
{
    Json runs = Json::array();
    for (const auto [first, last] : inq_runs(frames))
        runs.push_back({first, last});
    return runs;
}

/// None if a run is not in the scene.
FrameSet to_frames(const Json& runs, int scene_length)
{
    FrameSet frames;
    for (const Json& run : runs) {
        const FrameRun found{run.at(0), run.at(1)};
        if (found.first < 1 || found.last < found.first || found.last > scene_length)
            return {};
        frames.merge(inq_frames(found));
    }
    return frames;
}

bool is_in_bounds(const FarmJob& job)
{
    return !job.asked.empty() && 0 < job.chunk_size && job.chunk_size <= FarmJob::MOST_FRAMES;
}

/// Without a chunk size if it is of another release, or was changed by hand.
FarmJob to_job(const Json& json)
{
    FarmJob job;
    if (json.at("format") != FORMAT)
        return job;
    job.renderer = json.at("renderer");
    job.renderer_print = json.at("renderer_print");
    job.scene = json.at("scene");
    job.scene_print = json.at("scene_print");
    job.shown = json.at("shown").get<std::map<std::string, std::string>>();
    job.pictures = json.at("pictures");
    job.output = json.at("output");
    job.options = json.at("options").get<std::vector<std::string>>();
    job.scene_length = json.at("scene_length");
    job.extension = json.at("extension");
    job.width = json.at("width");
    job.height = json.at("height");
    if (job.scene_length <= FarmJob::MOST_FRAMES)
        job.asked = to_frames(json.at("asked"), job.scene_length);
    job.order = json.at("order");
    job.ordered_at = json.at("ordered_at");
    job.user = json.at("user");
    if (json.at("key") == job.inq_key())
        job.chunk_size = json.at("chunk_size");
    return job;
}
} // namespace

std::string FarmJob::inq_key() const
{
    std::vector<std::string> texts{renderer, renderer_print, scene, scene_print, output};
    texts.insert(texts.end(), options.begin(), options.end());
    return inq_text_print(texts);
}

bool FarmJob::is_strict() const
{
    return std::ranges::count(options, "--strict") > 0;
}

std::string FarmJob::inq_file_name(int frame) const
{
    return inq_number_text(frame) + extension;
}

std::string FarmJob::find_changed_file(bool may_have_come) const
{
    for (const auto& [file, print] : shown)
        if (!(may_have_come && print == NO_FILE_PRINT) && inq_file_print(file) != print)
            return file;
    return {};
}

bool FarmJob::makes_files_of(const FarmJob& other) const
{
    return extension == other.extension &&
           (scene == other.scene ||
            std::ranges::any_of(asked, [&](int frame) { return other.asked.contains(frame); }));
}

std::string FarmJob::inq_text() const
{
    constexpr int INDENT = 2;
    const Json json{{"format", FORMAT},
                    {"key", inq_key()},
                    {"renderer", renderer},
                    {"renderer_print", renderer_print},
                    {"scene", scene},
                    {"scene_print", scene_print},
                    {"shown", shown},
                    {"pictures", pictures},
                    {"output", output},
                    {"options", options},
                    {"scene_length", scene_length},
                    {"extension", extension},
                    {"width", width},
                    {"height", height},
                    {"asked", to_json(asked)},
                    {"chunk_size", chunk_size},
                    {"order", order},
                    {"ordered_at", ordered_at},
                    {"user", user}};
    return json.dump(INDENT) + "\n";
}

std::optional<FarmJob> FarmJob::parse(const std::string& text)
{
    const Json json = parse_json(text);
    std::optional<FarmJob> job = read_json<FarmJob>([&] { return to_job(json); });
    return job && is_in_bounds(*job) ? job : std::nullopt;
}

std::string inq_time_text()
{
    char text[] = "2000-01-01T00:00:00Z";
    const std::time_t now = std::time(nullptr);
    struct tm parts {};
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&now, &parts));
    return text;
}
