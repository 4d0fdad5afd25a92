#pragma once

#include "modules/farm/hdr/JobFolder.h"

class BatchManager;

/// A chunk with frames that are not done, and the last failed try at it.
struct FailedChunk {
    int chunk = 0;
    FailedTry last;
    std::vector<std::string> log; // the last lines that its task said
};

/// What has become of the frames of one job; each is in one of the sets.
struct JobStatus {
    bool is_complete() const { return done.size() == job.asked.size(); }

    FarmJob job;
    FrameSet done;
    FrameSet running; // a task for it runs
    FrameSet waiting; // a task for it is in the queue, perhaps one that ends or comes back
    FrameSet failed;  // for good, until the next order
    FrameSet missing; // and nobody is at it
    std::vector<FailedChunk> failures;
};

/// What an output folder holds and what is still to come.
struct FarmStatus {
    /// What tries have left of a job that is complete goes.
    static FarmStatus look(BatchManager& manager, const std::string& output);

    bool is_complete() const;
    bool is_in_work() const;

    std::string service_error;           // why nobody knows what waits and runs; empty: it is known
    std::vector<JobStatus> jobs;         // not those whose place another one has taken
    std::vector<std::string> unreadable; // jobs whose file can't be read
    FrameSet old; // with a file that was made before such a change, and nobody has asked for again
};

/// Takes all jobs of the folder out of the queue, and removes what their tasks have left. Gives
/// words for the user. Throws a `std::runtime_error` that says why it could not be.
std::string cancel_jobs(BatchManager& manager, const std::string& output);

/// The batch service, with the farm's engine if it has none.
BatchManager& with_engine(BatchManager& manager);
