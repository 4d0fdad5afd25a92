#include "modules/farm/hdr/ChunkTask.h"

#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/KIVString.h"
#include "modules/farm/hdr/Child.h"
#include "modules/farm/hdr/RenderWords.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/hdr/finger_prints.h"
#include "modules/farm/src/json.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {
/// Another try would end the same: of the renderer's codes those that say what is wrong with the
/// order.
constexpr std::array FINAL_RESULTS = {
    1, 201, 204, 206, 207, 213, int(ChunkTask::SCENE_CHANGED), int(ChunkTask::RENDERER_DIFFERS)};
constexpr char RENDERER_LOG[] = "log.jsonl";

bool is_final(int result)
{
    return std::ranges::find(FINAL_RESULTS, result) != FINAL_RESULTS.end();
}

/// Takes a folder away at its end.
class Scratch {
public:
    explicit Scratch(fs::path path) : path(std::move(path)) {}
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        std::error_code failure;
        fs::remove_all(path, failure);
    }

    const fs::path path;
};

/// The renderer is stopped along with its task, and may have ended first.
bool is_stopped(int result)
{
    constexpr int STEPS = 10;
    constexpr int STEP = 100; // milliseconds
    const bool is_told =
        result == Child::SIGNAL_BASE + SIGTERM || result == Child::SIGNAL_BASE + SIGINT;
    for (int i = 0; is_told && i < STEPS && HeldSignals::inq_stop() == 0; ++i)
        HeldSignals::wait(STEP);
    return HeldSignals::inq_stop() != 0;
}

int inq_stopped_result()
{
    return Child::SIGNAL_BASE + HeldSignals::inq_stop();
}

std::vector<std::string> make_command(const FarmJob& job, const FrameSet& frames,
                                      const fs::path& scratch)
{
    std::vector<std::string> command{job.renderer, "image"};
    command.insert(command.end(), job.options.begin(), job.options.end());
    command.insert(command.end(), {"--log-jsonl", scratch / RENDERER_LOG});
    command.insert(command.end(),
                   {"--frames", inq_text(frames), "-o", scratch.string(), "--", job.scene});
    return command;
}

void say(const std::string& words)
{
    std::cout << inq_time_text() << ' ' << inq_host_name() << ": " << words << std::endl;
}

int count_tries(const std::vector<FailedTry>& failures, int order)
{
    return static_cast<int>(std::ranges::count(failures, order, &FailedTry::order));
}

const FailedTry* find_final(const std::vector<FailedTry>& failures, int order)
{
    const auto found = std::ranges::find_if(failures, [order](const FailedTry& failed) {
        return failed.order == order && failed.is_final;
    });
    return found == failures.end() ? nullptr : &*found;
}
} // namespace

// The job is read anew each time: more frames may have been asked for meanwhile.
int ChunkTask::run()
{
    folder.remove_dead_scratch();
    while (HeldSignals::inq_stop() == 0) {
        const std::optional<FarmJob> job = folder.read_job();
        if (!job) {
            say("there is no job in " + folder.inq_path().string());
            return NO_JOB;
        }
        if (folder.is_superseded()) {
            say("a later job makes the same files");
            return SUPERSEDED;
        }
        const FrameSet wanted = job->inq_plan().cut(job->asked, chunk);
        const FrameSet frames = without(wanted, folder.inq_done(*job, wanted));
        if (frames.empty())
            return DONE;
        const std::vector<FailedTry> failures = folder.read_failures(chunk);
        if (const FailedTry* failed = find_final(failures, job->order)) {
            say("the chunk has failed: " + failed->reason);
            return failed->result;
        }
        const int number = count_tries(failures, job->order) + 1;
        const Try tried = render(*job, frames, number);
        if (HeldSignals::inq_stop() == 0)
            note_failure(*job, frames, number, tried);
    }
    say("stopped by signal " + std::to_string(HeldSignals::inq_stop()));
    return inq_stopped_result();
}

void ChunkTask::note_failure(const FarmJob& job, const FrameSet& frames, int number,
                             const Try& tried)
{
    const FrameSet undone = without(frames, folder.inq_done(job, frames));
    if (undone.empty())
        return;
    FailedTry failed;
    failed.time = inq_time_text();
    failed.host = inq_host_name();
    failed.order = job.order;
    failed.number = number;
    failed.result = tried.result == 0 ? int(FRAMES_MISSING) : tried.result;
    failed.frames = inq_text(undone);
    failed.reason = tried.reason;
    failed.is_final = number >= MOST_TRIES || is_final(tried.result);
    folder.add_failure(chunk, failed);
    say("try " + std::to_string(number) + " failed for the frames " + failed.frames + ": " +
        failed.reason);
}

ChunkTask::Try ChunkTask::render(const FarmJob& job, const FrameSet& frames, int number)
{
    try {
        const Scratch scratch(folder.make_scratch(number));
        return render_into(scratch.path, job, frames);
    } catch (const std::exception& error) {
        return {NO_PLACE, error.what()};
    }
}

namespace {
/// Why the frames would not be those that were ordered; nothing if they would be.
std::optional<ChunkTask::Try> find_change(const FarmJob& job)
{
    try {
        if (inq_scene_print(job.scene) != job.scene_print)
            return {{ChunkTask::SCENE_CHANGED, "the scene is not the one that was submitted"}};
        if (const std::string file = job.find_changed_file(false); !file.empty())
            return {{ChunkTask::SCENE_CHANGED, file + " is not the file that was submitted"}};
        if (inq_program_print(job.renderer) != job.renderer_print)
            return {{ChunkTask::RENDERER_DIFFERS, "this host has another renderer"}};
        return std::nullopt;
    } catch (const std::exception& error) {
        return {{ChunkTask::NO_SCENE, error.what()}};
    }
}

std::string describe(int result, std::size_t n_missing)
{
    const std::string end = result == Child::NOT_STARTED
                                ? "the renderer could not be started"
                                : "the renderer ended with " + std::to_string(result);
    return end +
           (n_missing == 0 ? "" : ", and " + std::to_string(n_missing) + " frames are not whole");
}

/// Frames that the renderer says are done, with all of their pictures. Its result is no help: a
/// frame that could not be written ranks above one with holes, and one that is killed has none.
FrameSet find_flawless(const fs::path& scratch)
{
    FrameSet frames;
    std::istringstream lines(read_file(scratch / RENDERER_LOG));
    for (std::string line; std::getline(lines, line);) {
        const Json event = parse_json(line);
        const auto is_flawless = [&] {
            return event.at("event") == "frame done" && !event.contains("unreadable");
        };
        if (read_json<bool>(is_flawless).value_or(false))
            frames.insert(event.value("frame", 0));
    }
    return frames;
}

/// The frames that the renderer has left whole.
FrameSet find_whole(const fs::path& scratch, const FarmJob& job, const FrameSet& frames)
{
    FrameSet whole;
    for (const int frame : frames)
        if (is_whole_frame((scratch / job.inq_file_name(frame)).string(), job.options, job.width,
                           job.height))
            whole.insert(frame);
    return whole;
}

/// Facts that are still true when the file has another name.
FrameFacts sync_frame(const fs::path& file)
{
    const FileHandle handle = FileHandle::open_to_read(file.c_str());
    if (!handle.is_open() || !handle.sync())
        throw_disc_error("can't write " + file.string());
    const std::optional<FrameFacts> facts = FrameFacts::look(file);
    if (!facts)
        throw_disc_error("can't read " + file.string());
    return *facts;
}
} // namespace

ChunkTask::Try ChunkTask::render_into(const fs::path& scratch, const FarmJob& job,
                                      const FrameSet& frames)
{
    if (const std::optional<Try> change = find_change(job))
        return *change;
    say("rendering " + inq_text(frames));
    const int result = Child::run(make_command(job, frames, scratch));
    if (is_stopped(result))
        return {inq_stopped_result(), "stopped"};
    FrameSet whole = find_whole(scratch, job, frames);
    if (job.is_strict())
        std::erase_if(whole, [flawless = find_flawless(scratch)](int frame) {
            return !flawless.contains(frame);
        });
    if (const std::optional<Try> change = find_change(job))
        return *change;
    if (folder.is_superseded())
        return {SUPERSEDED, "a later job makes the same files"};
    publish(scratch, job, whole);
    return {result, describe(result, frames.size() - whole.size())};
}

// A marker is written when the disc has the frame under its name, so it never tells of a frame
// that a power cut takes away.
void ChunkTask::publish(const fs::path& scratch, const FarmJob& job, const FrameSet& frames)
{
    std::map<int, FrameFacts> moved;
    for (const int frame : without(frames, folder.inq_done(job, frames))) {
        const std::string name = job.inq_file_name(frame);
        moved[frame] = sync_frame(scratch / name);
        if (std::rename((scratch / name).c_str(), (fs::path(job.output) / name).c_str()) != 0)
            throw_disc_error("can't write " + name);
    }
    if (!moved.empty() && !sync_folder(job.output))
        throw_disc_error("can't write to " + job.output);
    for (const auto& [frame, facts] : moved)
        folder.mark_done(job, frame, facts);
}
