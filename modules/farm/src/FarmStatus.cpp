#include "modules/farm/hdr/FarmStatus.h"

#include "batchapi/hdr/BatchManager.h"
#include "batchapi/hdr/SlurmEngine.h"
#include "modules/farm/hdr/durable_file.h"
#include "modules/farm/src/find_tasks.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace fs = std::filesystem;

namespace {
bool is_own(const FarmJob& job)
{
    return job.user == inq_user_name();
}

std::vector<std::string> read_last_lines(const fs::path& file)
{
    constexpr std::size_t MOST = 5;
    std::vector<std::string> lines;
    std::istringstream text(read_file(file));
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
        if (lines.size() > MOST)
            lines.erase(lines.begin());
    }
    return lines;
}

/// Of the latest order. A host that was cut off may tell later of an earlier one.
std::optional<FailedTry> find_last_failure(const JobFolder& folder, int chunk)
{
    std::optional<FailedTry> last;
    for (const FailedTry& failed : folder.read_failures(chunk))
        if (!last || failed.order >= last->order)
            last = failed;
    return last;
}

/// Sorts the frames of a job by what has become of them.
class JobLook {
public:
    JobLook(const JobFolder& folder, const FarmJob& job, const std::map<int, BatchState>& alive)
        : folder(folder), alive(alive)
    {
        status.job = job;
    }

    JobStatus look()
    {
        const FarmJob& job = status.job;
        status.done = folder.inq_done(job, job.asked);
        const FrameSet undone = without(job.asked, status.done);
        for (const int chunk : job.inq_plan().inq_chunks(undone))
            look_at(chunk, job.inq_plan().cut(undone, chunk));
        return std::move(status);
    }

private:
    void look_at(int chunk, FrameSet undone)
    {
        const std::optional<FailedTry> failure = find_last_failure(folder, chunk);
        const auto task = alive.find(chunk);
        const bool is_old = task != alive.end() && failure && failure->order != status.job.order;
        if (failure && !is_old)
            status.failures.push_back({chunk, *failure, read_last_lines(folder.inq_log(chunk))});
        const bool has_failed = failure && failure->is_final;
        if (task != alive.end() && !(has_failed && task->second == BatchState::ENDING))
            (task->second == BatchState::RUNNING ? status.running : status.waiting).merge(undone);
        else
            (has_failed ? status.failed : status.missing).merge(undone);
    }

    const JobFolder& folder;
    const std::map<int, BatchState>& alive; // by chunks
    JobStatus status;
};

/// Frames of superseded jobs that no other job of the folder has asked for, and whose files lie
/// there still.
FrameSet find_old(const std::vector<FarmJob>& superseded, const std::vector<JobStatus>& jobs)
{
    FrameSet old;
    for (const FarmJob& before : superseded) {
        FrameSet frames = before.asked;
        for (const JobStatus& status : jobs)
            if (status.job.extension == before.extension)
                frames = without(frames, status.job.asked);
        std::error_code failure;
        for (const int frame : frames)
            if (fs::exists(fs::path(before.output) / before.inq_file_name(frame), failure))
                old.insert(frame);
    }
    return old;
}
} // namespace

FarmStatus FarmStatus::look(BatchManager& manager, const std::string& output)
{
    FarmStatus status;
    std::vector<FarmJob> superseded;
    for (const JobFolder& folder : JobFolder::list(output)) {
        const std::optional<FarmJob> job = folder.read_job();
        if (folder.is_superseded()) {
            if (job)
                superseded.push_back(*job);
            continue;
        }
        if (!job) {
            status.unreadable.push_back(folder.inq_job_name());
            continue;
        }
        // Asked before the files are looked at: a task that ends in between has done its frames.
        const std::map<int, BatchState> alive = find_tasks(
            manager, job->inq_name(), is_own(*job) ? "" : job->user, status.service_error);
        status.jobs.push_back(JobLook(folder, *job, alive).look());
        if (status.service_error.empty() && alive.empty() && is_own(*job) &&
            status.jobs.back().is_complete())
            folder.remove_all_scratch();
    }
    status.old = find_old(superseded, status.jobs);
    return status;
}

bool FarmStatus::is_complete() const
{
    return old.empty() && unreadable.empty() &&
           std::ranges::all_of(jobs, [](const JobStatus& status) { return status.is_complete(); });
}

bool FarmStatus::is_in_work() const
{
    return std::ranges::any_of(jobs, [](const JobStatus& status) {
        return !status.running.empty() || !status.waiting.empty();
    });
}

namespace {
/// Waits a while for the tasks to end. False if there are some still, or nobody knows.
bool wait_until_idle(BatchManager& manager, const std::string& job)
{
    constexpr int MOST_LOOKS = 20;
    constexpr std::chrono::milliseconds PAUSE(500);
    for (int i = 0; i < MOST_LOOKS; ++i) {
        std::string error;
        const bool is_idle = find_tasks(manager, job, "", error).empty();
        if (is_idle || !error.empty())
            return error.empty();
        std::this_thread::sleep_for(PAUSE);
    }
    return false;
}

/// Whose job that is to come is in the folder; empty if it is this user's, or nobody knows.
std::string find_other_user(const JobFolder& folder)
{
    const std::optional<FarmJob> job = folder.read_job();
    const bool is_to_come =
        job && !folder.is_superseded() && folder.inq_done(*job, job->asked) != job->asked;
    return is_to_come && !is_own(*job) ? job->user : "";
}
} // namespace

std::string cancel_jobs(BatchManager& manager, const std::string& output)
{
    std::string said;
    std::string refused;
    for (const JobFolder& folder : JobFolder::list(output)) {
        const std::string name = folder.inq_job_name();
        if (const std::string other = find_other_user(folder); !other.empty()) {
            refused += name + " is a job of " + other + ", who alone can cancel it. ";
            continue;
        }
        KIVString error;
        if (!manager.cancel(name, &error))
            throw std::runtime_error(error.str());
        const bool is_idle = wait_until_idle(manager, name);
        if (is_idle)
            folder.remove_all_scratch();
        else
            folder.remove_dead_scratch();
        said += name + (is_idle ? ": nothing of it is in the queue.\n"
                                : ": its tasks have not ended yet.\n");
    }
    if (!refused.empty())
        throw std::runtime_error(said + refused);
    return said;
}

BatchManager& with_engine(BatchManager& manager)
{
    if (!manager.inq_has_engine())
        manager.set_engine(std::make_unique<SlurmEngine>());
    return manager;
}
