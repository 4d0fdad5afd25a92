#include "modules/farm/hdr/Submission.h"

#include "batch/hdr/BatchSceneInfo.h"
#include "batchapi/hdr/BatchManager.h"
#include "batchapi/hdr/Command.h"
#include "kivlib/hdr/ModuleFolder.h"
#include "kivlib/hdr/file_operations.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/hdr/finger_prints.h"
#include "modules/farm/src/find_tasks.h"
#include "modules/farm/src/json.h"
#include "xsheet/store_control/hdr/FolderLock.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {
constexpr int NORMAL_CHUNK_SIZE = 8;
constexpr char OTHER_ORDER[] = "Another order was made at the same time. Submit again.";
constexpr char NO_CHARACTER[] = "\uFFFD"; // stands for bytes that are no UTF-8

[[noreturn]] void refuse(const std::string& reason)
{
    throw std::runtime_error(reason);
}

bool is_program(const fs::path& path)
{
    return ::access(path.c_str(), X_OK) == 0;
}

/// What is asked for, as far as the scene has it.
FrameRun choose_run(const RenderWords& words, const BatchSceneInfo& info)
{
    FrameRun run{};
    FrameRun whole{};
    info.inq_frame_range(&whole.first, &whole.last);
    if (words.key_range)
        info.inq_key_range(&run.first, &run.last);
    else
        info.inq_selected_range(&run.first, &run.last);
    if (whole.last > FarmJob::MOST_FRAMES)
        refuse("The scene is too long.");
    const FrameRun cut{std::max({run.first, whole.first, 1}), std::min(run.last, whole.last)};
    if (cut.last < cut.first)
        refuse("The scene has no frames from " + std::to_string(run.first) + " to " +
               std::to_string(run.last) + ".");
    return cut;
}

void make_output_folder(const std::string& output)
{
    constexpr int ALL_MAY_USE_IT = 0777;
    makedir(output, ALL_MAY_USE_IT, false);
    if (!inq_is_directory(output) || ::access(output.c_str(), W_OK | X_OK) != 0)
        refuse("Can't write to the output folder " + output + ".");
}

/// The files that the scene refers to, as the renderer sees them. It loads the scene in a process
/// of its own: there may be another one in this process, and one at a time can be loaded.
std::map<std::string, std::string> list_shown(const std::string& renderer, const std::string& scene)
{
    constexpr int DEADLINE = 600'000; // milliseconds
    constexpr std::size_t MOST_TEXT = std::size_t(1) << 28;
    Command command{renderer, {"list_refs", "--json", "--", scene}, {}, DEADLINE, MOST_TEXT};
    for (char** variable = environ; *variable; ++variable)
        command.environment.emplace_back(*variable);
    const CommandAnswer answer = run(command);
    const Json list = Json::parse(answer.output, nullptr, false);
    if (!list.is_array() || answer.result != 0)
        refuse("The renderer can't load the scene " + scene + ". " + answer.errors);
    std::map<std::string, std::string> shown;
    for (const Json& entry : list)
        shown.emplace(entry.value("path", ""), "");
    for (const auto& [path, print] : shown)
        if (path.find(NO_CHARACTER) != std::string::npos)
            refuse("The scene refers to " + path + ", whose name is no UTF-8.");
    return shown;
}

/// The job file is JSON, which is UTF-8.
void refuse_other_bytes(const FarmJob& job)
{
    if (!read_json<std::string>([&] { return job.inq_text(); }))
        refuse("The name of the scene, of the output folder or of a file among the options is no "
               "UTF-8.");
}
} // namespace

FarmPrograms FarmPrograms::find()
{
    fs::path folder = ModuleFolder::inq_path().str();
    while (folder.has_relative_path()) {
        folder = folder.parent_path();
        const FarmPrograms programs{folder / "bin/CMontaray", folder / "bin/montaray-farm-task"};
        if (is_program(programs.renderer) && is_program(programs.task))
            return programs;
    }
    refuse("The programs CMontaray and montaray-farm-task are not installed beside the library.");
}

FarmJob Submission::make_job(const RenderWords& words, const BatchSceneInfo& info) const
{
    if (info.inq_scene_path().is_null())
        refuse("The scene was never saved.");
    FarmJob job;
    int first = 0;
    info.inq_frame_range(&first, &job.scene_length);
    job.renderer = programs.renderer;
    job.renderer_print = inq_program_print(programs.renderer);
    job.scene = inq_absolute_path(info.inq_scene_path()).str();
    job.scene_print = inq_scene_print(job.scene);
    job.shown = list_shown(programs.renderer, job.scene);
    if (!words.profile.empty())
        job.shown.emplace(words.profile, "");
    for (auto& [file, print] : job.shown)
        print = inq_file_print(file);
    if (inq_scene_print(job.scene) != job.scene_print)
        refuse("The scene was saved meanwhile. Submit again.");
    job.output = words.output;
    job.options = words.options;
    job.extension = words.extension;
    job.width = words.width;
    job.height = words.height;
    job.ordered_at = inq_time_text();
    job.user = inq_user_name();
    refuse_other_bytes(job);
    return job;
}

/// Those that may still run, by their chunks.
std::map<int, BatchState> Submission::find_own_tasks(const FarmJob& job) const
{
    std::string error;
    std::map<int, BatchState> tasks = find_tasks(manager, job.inq_name(), "", error);
    if (!error.empty())
        refuse(error);
    return tasks;
}

// A task that runs may be about to end, since it has done or failed what it was asked for, and not
// see that more is. It has seen that if it does not end soon.
std::set<int> Submission::find_chunks_on_their_way(const FarmJob& job) const
{
    constexpr int MOST_LOOKS = 20;
    constexpr std::chrono::milliseconds PAUSE(250);
    const JobFolder folder = JobFolder::of(job);
    std::set<int> chunks;
    bool has_doubt = true;
    for (int look = 0; has_doubt && look < MOST_LOOKS; ++look) {
        if (look > 0)
            std::this_thread::sleep_for(PAUSE);
        chunks.clear();
        has_doubt = false;
        for (const auto& [chunk, state] : find_own_tasks(job)) {
            if (state == BatchState::ENDING)
                continue; // a new one would wait for its end
            const FrameSet wanted = job.inq_plan().cut(job.asked, chunk);
            chunks.insert(chunk);
            has_doubt |= state != BatchState::WAITING && folder.inq_done(job, wanted) != wanted;
        }
    }
    return chunks;
}

void Submission::choose_chunk_size(FarmJob& job, const FarmJob& before, const RenderWords& words,
                                   bool is_idle) const
{
    job.chunk_size = before.chunk_size > 0 ? before.chunk_size : NORMAL_CHUNK_SIZE;
    if (!is_idle)
        return; // its tasks know the chunks by their numbers
    job.chunk_size = words.chunk_size.value_or(job.chunk_size);
    int highest = 0;
    KIVString error;
    if (!manager.inq_highest_index(&highest, &error))
        refuse(error.str());
    const int least = (job.scene_length + highest) / (highest + 1);
    job.chunk_size = std::max(job.chunk_size, least);
}

// One that can't be read may make any files. One that was superseded before may have stayed in the
// queue.
std::string Submission::supersede_others(const FarmJob& job) const
{
    std::string said;
    for (const JobFolder& folder : JobFolder::list(job.output)) {
        const std::optional<FarmJob> other = folder.read_job();
        const std::string name = folder.inq_job_name();
        if (name == job.inq_name() || (other && !other->makes_files_of(job)))
            continue;
        const bool is_new = !folder.is_superseded();
        if (is_new)
            folder.set_superseded(true);
        KIVString error;
        bool is_cancelled = manager.cancel(name, &error);
        if (other && other->user != job.user) {
            error = "it is a job of " + other->user + ".";
            is_cancelled = false;
        }
        if (is_new || !is_cancelled)
            said += "It takes the place of " + name +
                    (is_cancelled ? ".\n" : ", which may be running: " + error.str() + "\n");
    }
    return said;
}

void Submission::send(const FarmJob& job, const std::set<int>& chunks) const
{
    const std::string folder = JobFolder::of(job).inq_path();
    BatchJob batch_job;
    batch_job.name = job.inq_name();
    batch_job.arguments = {programs.task, folder};
    batch_job.tasks.assign(chunks.begin(), chunks.end());
    batch_job.folder = folder;
    batch_job.log = folder + "/log/{task}";
    KIVString error;
    if (!manager.submit(batch_job, &error))
        refuse(error.str());
}

namespace {
/// What would be found out by looking at the frames.
std::string describe_missing_files(const FarmJob& job)
{
    const auto n = std::ranges::count_if(
        job.shown, [](const auto& entry) { return entry.second == NO_FILE_PRINT; });
    return n == 0 ? ""
                  : std::to_string(n) + " of the files that the scene refers to are missing; " +
                        "list_refs --check names them.\n";
}

/// Tasks of another user can't be told, nor can they be ended.
void refuse_work_of_other(const FarmJob& before, const std::string& user)
{
    const bool is_done = JobFolder::of(before).inq_done(before, before.asked) == before.asked;
    if (before.user != user && !is_done)
        refuse("The job " + before.inq_name() + " is one of " + before.user +
               ", and not all of its frames are there. Choose another output folder.");
}

std::string inq_job_text(const std::optional<FarmJob>& job)
{
    return job ? job->inq_text() : "";
}

/// What is left of a job that can't be read any more says nothing about this one.
std::string begin_anew(const JobFolder& folder, bool is_idle)
{
    const std::string name = folder.inq_job_name();
    const bool is_damaged = folder.has_job();
    if (is_damaged && !is_idle)
        refuse("The file of the job " + name + " can't be read, and it is in the queue. " +
               "Cancel it, and submit again.");
    folder.forget_done();
    folder.forget_failures();
    return is_damaged ? "The file of the job " + name +
                            " can't be read: what it was asked for is rendered anew.\n"
                      : "";
}

/// Nobody knows which frames show a picture.
std::string forget_changed(FarmJob& job, const FarmJob& before, const JobFolder& folder)
{
    job.pictures = before.pictures;
    const std::string changed = before.find_changed_file(before.is_strict());
    if (changed.empty())
        return "";
    ++job.pictures;
    folder.forget_done();
    return changed + " has changed: all frames are rendered anew.\n";
}

std::string describe(const FarmJob& job, const FrameSet& missing, const std::set<int>& sent)
{
    const std::string start = job.inq_name() + ": ";
    if (missing.empty())
        return start + "all frames are there, and nothing is sent.\n";
    if (sent.empty())
        return start + "the frames " + inq_text(missing) +
               " are on their way already, and nothing is sent.\n";
    FrameSet frames;
    for (const int chunk : sent)
        frames.merge(job.inq_plan().cut(missing, chunk));
    return start + std::to_string(sent.size()) + " tasks for the frames " + inq_text(frames) +
           " are sent.\n";
}
} // namespace

std::string Submission::submit(const RenderWords& words, const BatchSceneInfo& info)
{
    const FrameSet frames = inq_frames(choose_run(words, info));
    make_output_folder(words.output);
    FolderLock lock;
    if (lock.take(words.output, FolderLock::EXCLUSIVE) == FolderLock::BUSY)
        refuse("Another render job is being submitted to " + words.output + ".");

    FarmJob job = make_job(words, info);
    const JobFolder folder = JobFolder::of(job);
    folder.make();
    const std::optional<FarmJob> found = folder.read_job();
    const FarmJob before = found.value_or(FarmJob());
    refuse_work_of_other(before, job.user);
    const bool is_idle = find_own_tasks(job).empty();
    std::string said = describe_missing_files(job);
    said += found ? forget_changed(job, before, folder) : begin_anew(folder, is_idle);
    job.scene_length = std::max(job.scene_length, before.scene_length);
    choose_chunk_size(job, before, words, is_idle);
    if (is_idle && found && found->user == job.user)
        folder.remove_all_scratch();
    job.asked = frames;
    job.asked.merge(FrameSet(before.asked));
    job.order = before.order + (folder.inq_done(job, frames) == frames ? 0 : 1);
    if (inq_job_text(folder.read_job()) != inq_job_text(found))
        refuse(OTHER_ORDER);
    folder.write_job(job);
    folder.set_superseded(false);
    said += supersede_others(job);
    try {
        return said + send_missing(job, frames);
    } catch (const std::runtime_error& error) {
        refuse(said + error.what());
    }
}

// Of two orders at the same time the one whose job file was written first is lost.
std::string Submission::send_missing(const FarmJob& job, const FrameSet& frames) const
{
    const JobFolder folder = JobFolder::of(job);
    const std::set<int> on_their_way = find_chunks_on_their_way(job);
    const FrameSet missing = without(frames, folder.inq_done(job, frames));
    std::set<int> chunks = job.inq_plan().inq_chunks(missing);
    for (const int chunk : on_their_way)
        chunks.erase(chunk);
    if (!chunks.empty())
        send(job, chunks);
    const std::optional<FarmJob> now = folder.read_job();
    if (!now || !std::ranges::includes(now->asked, frames))
        refuse(OTHER_ORDER);
    return describe(job, missing, chunks);
}
