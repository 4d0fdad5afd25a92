#include "batchapi/hdr/BatchManager.h"
#include "frontend/CMontaray/Progress.h"
#include "frontend/montaray_scene/verbs.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/in_one_line.h"
#include "modules/farm/hdr/FarmStatus.h"

#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>
#include <thread>

namespace {
using Json = nlohmann::ordered_json;

BatchManager& inq_service()
{
    return with_engine(*BatchManager::inq_batch_manager());
}

struct Kind {
    const char* name;
    FrameSet JobStatus::*frames;
};
constexpr Kind KINDS[] = {
    {"done", &JobStatus::done},       {"running", &JobStatus::running},
    {"waiting", &JobStatus::waiting}, {"failed", &JobStatus::failed},
    {"missing", &JobStatus::missing},
};

Json to_json(const FailedChunk& failed)
{
    const FailedTry& last = failed.last;
    return {{"chunk", failed.chunk}, {"frames", last.frames},  {"time", last.time},
            {"host", last.host},     {"try", last.number},     {"result", last.result},
            {"reason", last.reason}, {"final", last.is_final}, {"log", failed.log}};
}

Json to_json(const JobStatus& status)
{
    const FarmJob& job = status.job;
    Json json{{"name", job.inq_name()},      {"folder", JobFolder::of(job).inq_path().string()},
              {"scene", job.scene},          {"options", job.options},
              {"order", job.order},          {"ordered_at", job.ordered_at},
              {"chunk_size", job.chunk_size}};
    json["frames"]["asked"] = inq_text(job.asked);
    json["count"]["asked"] = job.asked.size();
    for (const Kind& kind : KINDS) {
        json["frames"][kind.name] = inq_text(status.*kind.frames);
        json["count"][kind.name] = (status.*kind.frames).size();
    }
    json["failures"] = Json::array();
    for (const FailedChunk& failed : status.failures)
        json["failures"].push_back(to_json(failed));
    return json;
}

void print_json(const FarmStatus& status, const std::string& output)
{
    Json json{{"output", output},
              {"complete", status.is_complete()},
              {"in_work", status.is_in_work()},
              {"service_error", status.service_error},
              {"unreadable", status.unreadable},
              {"old", inq_text(status.old)},
              {"jobs", Json::array()}};
    for (const JobStatus& job : status.jobs)
        json["jobs"].push_back(to_json(job));
    constexpr int INDENT = 2;
    std::cout << json.dump(INDENT, ' ', false, Json::error_handler_t::replace) << '\n';
}

void print_failure(const FailedChunk& failed)
{
    const FailedTry& last = failed.last;
    std::cout << "  frames " << last.frames << ", try " << last.number << " at " << last.time
              << " on " << last.host << ", result " << last.result << ": "
              << in_one_line(last.reason).str() << '\n';
    for (const std::string& line : failed.log)
        std::cout << "    | " << in_one_line(line).str() << '\n';
}

void print_job(const JobStatus& status)
{
    const FarmJob& job = status.job;
    std::cout << job.inq_name() << "  " << in_one_line(job.scene).str() << '\n'
              << "  " << status.done.size() << " of " << job.asked.size() << " frames ("
              << inq_text(job.asked) << ") are done\n";
    for (const Kind& kind : KINDS)
        if (const FrameSet& frames = status.*kind.frames;
            kind.frames != &JobStatus::done && !frames.empty())
            std::cout << "  " << kind.name << ": " << inq_text(frames) << '\n';
    for (const FailedChunk& failed : status.failures)
        print_failure(failed);
}

void print_text(const FarmStatus& status)
{
    for (const JobStatus& job : status.jobs)
        print_job(job);
    if (!status.old.empty())
        std::cout << "of an older job: " << inq_text(status.old) << '\n';
}

int inq_exit_status(const FarmStatus& status)
{
    if (status.is_complete())
        return DONE;
    if (!status.service_error.empty() || !status.unreadable.empty())
        return FAILED;
    return status.is_in_work() ? FRAMES_COMING : FRAMES_MISSING;
}

std::pair<int, int> count(const FarmStatus& status)
{
    std::pair<int, int> done_and_asked;
    for (const JobStatus& job : status.jobs) {
        done_and_asked.first += static_cast<int>(job.done.size());
        done_and_asked.second += static_cast<int>(job.job.asked.size());
    }
    return done_and_asked;
}

/// Until nothing is in work any more, or the service has not answered for a while.
void watch(const std::string& output)
{
    constexpr std::chrono::seconds PAUSE(2);
    constexpr int MOST_SILENCE = 5;
    std::optional<Progress> progress;
    bool is_in_work = true;
    for (int silence = 0; is_in_work && silence < MOST_SILENCE;) {
        const FarmStatus status = FarmStatus::look(inq_service(), output);
        const auto [done, asked] = count(status);
        if (!progress)
            progress.emplace().begin(asked, done);
        progress->set_done(done, asked);
        silence = status.service_error.empty() ? 0 : silence + 1;
        is_in_work = silence > 0 || status.is_in_work();
        if (is_in_work)
            std::this_thread::sleep_for(PAUSE);
    }
}

int tell_no_job(const std::string& output)
{
    std::cerr << in_one_line(output).str() << ": there is no render job\n";
    return FAILED;
}

int show(const std::string& output, bool as_json, bool is_watch)
{
    if (is_watch)
        watch(output);
    const FarmStatus status = FarmStatus::look(inq_service(), output);
    if (status.jobs.empty() && status.unreadable.empty())
        return tell_no_job(output);
    for (const std::string& name : status.unreadable)
        std::cerr << "montaray-scene: " << in_one_line(name).str()
                  << ": its file can't be read; submit it again\n";
    if (!status.service_error.empty())
        std::cerr << "montaray-scene: what runs is not known: "
                  << in_one_line(status.service_error).str() << '\n';
    if (as_json)
        print_json(status, output);
    else
        print_text(status);
    return inq_exit_status(status);
}

int cancel(const std::string& output)
{
    const std::string said = cancel_jobs(inq_service(), output);
    std::cout << said;
    return said.empty() ? tell_no_job(output) : DONE;
}

/// Tells what goes wrong.
template <class Verb> int run(const std::string& output_folder, Verb verb)
{
    try {
        return verb(inq_absolute_path(output_folder).str());
    } catch (const std::exception& exception) {
        std::cerr << "montaray-scene: " << in_one_line(exception.what()).str() << '\n';
        return FAILED;
    }
}
} // namespace

int show_farm_status(const std::string& output_folder, bool as_json, bool is_watch)
{
    return run(output_folder,
               [=](const std::string& output) { return show(output, as_json, is_watch); });
}

int cancel_farm_jobs(const std::string& output_folder)
{
    return run(output_folder, cancel);
}
