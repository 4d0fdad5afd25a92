#pragma once

#include <functional>

/// A run of places in the list of frames.
struct FrameBatch {
    int begin = 0;
    int end = 0; // exclusive
};

/// The list of frames as the processes of a run share it: each takes the next batch when it is done
/// with its own, so that all are busy until the end. Frames that look the same make one batch.
class FrameQueue {
public:
    explicit FrameQueue(int jobs);
    FrameQueue(const FrameQueue&) = delete;
    FrameQueue& operator=(const FrameQueue&) = delete;
    ~FrameQueue();

    bool is_usable() const { return shared != nullptr; }

    /// The next batch for the process; empty at the end. `goes_on` says whether a place belongs to
    /// the batch of the place before it.
    FrameBatch take(int job, int n_frames, const std::function<bool(int)>& goes_on);

    /// What the process took last.
    FrameBatch inq_in_hand(int job) const;

    /// Nothing behind `place` is rendered any more.
    void end_at(int place);
    bool is_wanted(int place) const;

    /// Whether nobody has taken some that are wanted.
    bool has_more(int n_frames) const;

private:
    struct Shared;

    int jobs;
    Shared* shared; // in memory that all processes see; null without any
};
