#include "frontend/CMontaray/JobPool.h"

#include "frontend/CMontaray/Message.h"
#include "frontend/CMontaray/StopSignal.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "render/hdr/CommandOutput.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr int MOST_DEATHS = 2; // with one frame in hand, or in a row with none

std::string inq_reason(int status)
{
    return WIFSIGNALED(status)
               ? "its process was ended by signal " + std::to_string(WTERMSIG(status))
               : "its process ended";
}

int wait_for(pid_t pid)
{
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

void remove_file(const KIVString& file)
{
    if (!file.is_null())
        ::unlink(file.c_str());
}
} // namespace

JobPool::JobPool(FrameQueue& queue, const std::string& folder, const std::vector<int>& frames,
                 const JobWork& work, RunListener& listener)
    : queue(queue), folder(folder), frames(frames), work(work), listener(listener)
{}

int JobPool::run(int n_jobs)
{
    share_unfinished_files();
    ::signal(SIGCHLD, SIG_DFL); // where it is ignored, nobody learns how a process ended
    n_jobs = std::min(n_jobs, static_cast<int>(frames.size()));
    for (int number = 0; number < n_jobs; ++number)
        start(number, {});
    while (!jobs.empty()) {
        pass_signal_on();
        wait();
    }
    settle_the_rest();
    return result;
}

void JobPool::start(int number, const std::vector<int>& first_places)
{
    Job job = Job::start(number, first_places, work);
    if (job.pid > 0)
        jobs.push_back(std::move(job));
    else
        *cerrp << "CMontaray: a process could not be started.\n";
}

void JobPool::pass_signal_on()
{
    if (is_stopping || StopSignal::inq_signal() == 0)
        return;
    is_stopping = true;
    for (const Job& job : jobs)
        ::kill(job.pid, SIGTERM);
}

void JobPool::wait()
{
    constexpr int PAUSE = 200; // milliseconds; a signal may have come just before
    std::vector<pollfd> ends;
    for (const Job& job : jobs)
        ends.push_back({job.pipe.inq_descriptor(), POLLIN, 0});
    if (::poll(ends.data(), ends.size(), PAUSE) <= 0)
        return;
    std::vector<Job> present = std::exchange(jobs, {});
    for (std::size_t i = 0; i < present.size(); ++i) {
        const bool is_open = ends[i].revents == 0 || present[i].read();
        listen(present[i]);
        if (is_open)
            jobs.push_back(std::move(present[i]));
        else
            bury(present[i]);
    }
}

void JobPool::listen(Job& job)
{
    while (std::optional<Message> message = Message::take_from(job.bytes))
        take_frame(take_event(*message));
}

bool JobPool::is_known(int place) const
{
    return place < next_place || waiting.contains(place);
}

void JobPool::take_frame(const FrameEvent& event)
{
    if (is_known(event.place)) // two processes had it
        return remove_file(event.report.unfinished);
    waiting.emplace(event.place, event);
    if (event.loss.empty())
        n_idle_deaths = 0;
    deliver();
}

void JobPool::deliver()
{
    while (!has_ended && waiting.contains(next_place))
        tell(waiting.extract(next_place++).mapped());
}

void JobPool::tell(FrameEvent event)
{
    CommandOutput::finish_file(event.report);
    listener.frame_ended(event);
    result = event.report.result;
    has_ended = result != 0;
    if (has_ended)
        queue.end_at(event.place);
}

/// A run that was stopped keeps whole frames also where one before them is wanting. Behind one that
/// can't be written, one process would not have come to them: what was there before stays.
void JobPool::settle_the_rest()
{
    if (StopSignal::inq_signal() == 0)
        lose_the_rest();
    while (!waiting.empty()) {
        FrameEvent event = waiting.extract(waiting.begin()).mapped();
        if (has_ended)
            remove_file(event.report.unfinished);
        else
            tell(std::move(event));
    }
}

/// Those that the process has taken and not told of.
std::vector<int> JobPool::list_lost_places(const Job& job) const
{
    std::vector<int> places = job.first_places;
    const FrameBatch batch = queue.inq_in_hand(job.number);
    for (int place = batch.begin; place < batch.end; ++place)
        places.push_back(place);
    std::ranges::sort(places); // one that has taken no batch since has the last one's in hand
    places.erase(std::ranges::unique(places).begin(), places.end());
    std::erase_if(places, [this](int place) { return is_known(place) || !queue.is_wanted(place); });
    return places;
}

std::set<std::string> JobPool::list_waiting_files() const
{
    std::set<std::string> files;
    for (const auto& [place, event] : waiting)
        files.insert(event.report.unfinished.get_file().str());
    return files;
}

void JobPool::bury(Job& job)
{
    const int status = wait_for(job.pid);
    const bool has_finished = WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    if (!has_finished)
        remove_unfinished_files(folder, job.pid, list_waiting_files());
    const bool lacks_frames = !has_finished || !list_lost_places(job).empty() ||
                              queue.has_more(static_cast<int>(frames.size()));
    if (lacks_frames && StopSignal::inq_signal() == 0)
        replace(job, inq_reason(status));
}

void JobPool::replace(const Job& job, const std::string& reason)
{
    std::vector<int> places = list_lost_places(job);
    if (places.empty() && ++n_idle_deaths > MOST_DEATHS) {
        *cerrp << "CMontaray: no new process is started: " << reason.c_str()
               << " without a frame in hand, once more.\n";
        return;
    }
    if (!places.empty() && ++n_deaths[places.front()] >= MOST_DEATHS) {
        lose(places.front(), reason);
        places.erase(places.begin());
    }
    start(job.number, places);
}

void JobPool::lose(int place, const std::string& reason)
{
    FrameEvent event;
    event.place = place;
    event.report.frame = frames[static_cast<std::size_t>(place)];
    event.loss = reason;
    take_frame(event);
}

void JobPool::lose_the_rest()
{
    for (int place = next_place; place < static_cast<int>(frames.size()) && !has_ended; ++place)
        if (!is_known(place))
            lose(place, "no process was left to render it");
}
