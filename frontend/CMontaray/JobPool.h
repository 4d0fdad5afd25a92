#pragma once

#include "frontend/CMontaray/FrameQueue.h"
#include "frontend/CMontaray/Job.h"

#include <map>

class Message;

/// Processes that share the frames of a run. What becomes of the frames is told in their order, as
/// one process would; the frames of a process that is killed are rendered by another one.
class JobPool {
public:
    /// Unfinished files of killed processes are removed from `folder`. All arguments outlive it.
    JobPool(FrameQueue& queue, const std::string& folder, const JobWork& work,
            RunListener& listener);

    /// Gives the result of the run.
    int run(int n_jobs);

private:
    void start(int number, const std::vector<int>& first_places);
    void wait();
    void pass_signal_on();
    void listen(Job& job);
    void take(Job& job, Message& message);
    void take_begun(Message& message);
    void take_frame(const FrameEvent& event);
    void deliver();
    void bury(Job& job);
    void replace(const Job& job, const std::string& reason);
    std::vector<int> list_lost_places(const Job& job) const;
    void lose(int place, const std::string& reason);
    void lose_the_rest();
    bool is_known(int place) const;

    FrameQueue& queue;
    const std::string folder;
    const JobWork& work;
    RunListener& listener;
    std::vector<Job> jobs;
    std::vector<int> frames; // empty until a process has loaded the scene
    std::map<int, FrameEvent> waiting;
    std::map<int, int> n_deaths; // of processes that had the place in hand
    int n_deaths_at_start = 0;
    int next_place = 0;
    bool has_ended = false; // by a frame that could not be written
    bool is_stopping = false;
    int result = 0;
};
