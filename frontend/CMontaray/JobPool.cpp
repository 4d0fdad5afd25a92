#include "frontend/CMontaray/JobPool.h"

#include "frontend/CMontaray/Message.h"
#include "frontend/CMontaray/StopSignal.h"
#include "frontend/CMontaray/exit_codes.h"
#include "kivlib/hdr/ConsoleOStream.h"

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <poll.h>
#include <sys/wait.h>

namespace {
constexpr int MOST_DEATHS = 2; // with one frame in hand, or while the scene is loaded

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

/// Files are written under names of the process's own first.
void remove_unfinished_files(const std::string& folder, pid_t pid)
{
    const std::string end = "." + std::to_string(pid) + "~";
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure))
        if (entry.path().native().ends_with(end))
            std::filesystem::remove(entry.path(), failure);
}

void remove_file(const FrameReport& report)
{
    std::error_code failure;
    if (report.outcome == FrameReport::WRITTEN || report.outcome == FrameReport::COPIED)
        std::filesystem::remove(report.file.str(), failure);
}
} // namespace

JobPool::JobPool(FrameQueue& queue, const std::string& folder, const JobWork& work,
                 RunListener& listener)
    : queue(queue), folder(folder), work(work), listener(listener)
{}

int JobPool::run(int n_jobs)
{
    for (int number = 0; number < n_jobs; ++number)
        start(number, {});
    while (!jobs.empty()) {
        pass_signal_on();
        wait();
    }
    if (has_ended)
        for (const auto& [place, event] : waiting)
            remove_file(event.report); // one process would not have come so far
    else if (!is_stopping)
        lose_the_rest();
    return result;
}

void JobPool::start(int number, const std::vector<int>& first_places)
{
    Job job = Job::start(number, first_places, work);
    if (job.pid > 0)
        jobs.push_back(std::move(job));
    else
        std::cerr << "CMontaray: a process could not be started.\n";
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
        take(job, *message);
}

void JobPool::take(Job& job, Message& message)
{
    switch (message.take_number()) {
    case Message::BEGUN:
        job.has_begun = true;
        take_begun(message);
        break;
    case Message::FRAME:
        take_frame(take_event(message));
        break;
    case Message::ENDED: {
        const std::string output = message.take_text();
        const std::string errors = message.take_text();
        job.has_ended = true;
        job.result = static_cast<int>(message.take_number());
        if (frames.empty() && result == 0 && job.result != 0) { // they all say the same
            *coutp << output.c_str();
            *cerrp << errors.c_str();
            result = job.result;
        }
        break;
    }
    default:
        break;
    }
}

void JobPool::take_begun(Message& message)
{
    if (!frames.empty())
        return;
    *coutp << message.take_text().c_str();
    *cerrp << message.take_text().c_str();
    for (long n = message.take_number(); n > 0; --n)
        frames.push_back(static_cast<int>(message.take_number()));
    listener.begun(frames);
}

bool JobPool::is_known(int place) const
{
    return place < next_place || waiting.contains(place);
}

void JobPool::take_frame(const FrameEvent& event)
{
    if (is_known(event.place))
        return; // two processes had it
    waiting.emplace(event.place, event);
    deliver();
}

void JobPool::deliver()
{
    for (auto first = waiting.begin();
         !has_ended && first != waiting.end() && first->first == next_place;
         first = waiting.begin()) {
        const FrameEvent event = std::move(first->second);
        waiting.erase(first);
        ++next_place;
        listener.frame_ended(event);
        result = event.report.result;
        has_ended = result != 0;
    }
}

/// Those that the process has taken and not told of.
std::vector<int> JobPool::list_lost_places(const Job& job) const
{
    std::vector<int> places = job.first_places;
    const FrameBatch batch = queue.inq_in_hand(job.number);
    for (int place = batch.begin; place < batch.end; ++place)
        places.push_back(place);
    std::erase_if(places, [this](int place) { return is_known(place) || !queue.is_wanted(place); });
    return places;
}

void JobPool::bury(Job& job)
{
    const int status = wait_for(job.pid);
    const bool has_failed_to_begin = job.has_ended && !job.has_begun;
    if (!job.has_ended)
        remove_unfinished_files(folder, job.pid);
    if (StopSignal::inq_signal() != 0 || has_failed_to_begin)
        return;
    if (!job.has_ended || !list_lost_places(job).empty())
        replace(job, inq_reason(status));
}

void JobPool::replace(const Job& job, const std::string& reason)
{
    std::vector<int> places = list_lost_places(job);
    if (places.empty() && ++n_deaths_at_start > MOST_DEATHS)
        return;
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
    for (int place = next_place; place < static_cast<int>(frames.size()); ++place)
        if (!is_known(place))
            lose(place, "no process was left to render it");
    if (frames.empty() && result == 0) {
        std::cerr << "CMontaray: the processes ended while they loaded the scene.\n";
        result = FRAMES_LOST;
    }
}
