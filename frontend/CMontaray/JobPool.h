#pragma once

#include "frontend/CMontaray/FrameQueue.h"
#include "frontend/CMontaray/Job.h"

#include <map>
#include <set>

/// Processes that share the frames of a run. Frames get their names, and are told of, in the order
/// of the list, as by one process; those of a process that is killed are rendered by another one.
class JobPool {
public:
    /// Unfinished files of killed processes are removed from `folder`. All arguments outlive it.
    JobPool(FrameQueue& queue, const std::string& folder, const std::vector<int>& frames,
            const JobWork& work, RunListener& listener);

    /// Gives the result of the run.
    int run(int n_jobs);

private:
    void start(int number, const std::vector<int>& first_places);
    void wait();
    void pass_signal_on();
    void listen(Job& job);
    void take_frame(const FrameEvent& event);
    void deliver();
    void tell(FrameEvent event);
    void settle_the_rest();
    void bury(Job& job);
    void replace(const Job& job, const std::string& reason);
    std::vector<int> list_lost_places(const Job& job) const;
    std::set<std::string> list_waiting_files() const;
    void lose(int place, const std::string& reason);
    void lose_the_rest();
    bool is_known(int place) const;

    FrameQueue& queue;
    const std::string folder;
    const std::vector<int>& frames;
    const JobWork& work;
    RunListener& listener;
    std::vector<Job> jobs;
    std::map<int, FrameEvent> waiting; // by place, for those before them
    std::map<int, int> n_deaths;       // of processes that had the place in hand
    int n_idle_deaths = 0;             // of those that had none, since a frame was done
    int next_place = 0;
    bool has_ended = false; // by a frame that could not be written
    bool is_stopping = false;
    int result = 0;
};
