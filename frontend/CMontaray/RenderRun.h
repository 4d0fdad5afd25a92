#pragma once

#include "frontend/CMontaray/FrameQueue.h"
#include "frontend/CMontaray/RunListener.h"
#include "frontend/CMontaray/StopSignal.h"

#include <chrono>

struct Options;

/// One process's part in a run: it renders the frames that it takes from the queue.
class RenderRun : public OutputRun {
public:
    /// `first_places` are dealt with before the queue is asked; all arguments outlive the run.
    RenderRun(const Options& options, FrameQueue& queue, int job, std::vector<int> first_places,
              RunListener& listener);

    bool choose_range(int scene_length, int& first, int& last) override;
    void begin() override { listener.begun(frames); }
    int next_frame(const SameFrames& same) override;
    bool wants_frame(int frame, const KIVString& file, int width, int height) override;
    void frame_ended(const FrameReport& report) override;
    AbortPanel* inq_abort_panel() override { return &stop; }
    bool looks_for_images() const override;
    bool is_rehearsal() const override;

private:
    /// -1 at the end.
    int next_place(const SameFrames& same);

    const Options& options;
    FrameQueue& queue;
    int job;
    std::vector<int> first_places;
    std::size_t n_first_done = 0;
    RunListener& listener;
    StopSignal stop;
    std::vector<int> frames;
    FrameBatch batch;
    int place = -1;
    std::chrono::steady_clock::time_point start;
};
