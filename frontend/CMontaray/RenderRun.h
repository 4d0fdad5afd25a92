#pragma once

#include "frontend/CMontaray/FrameQueue.h"
#include "frontend/CMontaray/RunListener.h"
#include "frontend/CMontaray/StopSignal.h"

#include <chrono>

struct Options;

/// A run that takes its frames from the queue. With several jobs, processes are made once the scene
/// is loaded, each with its own copy of it from then on.
class RenderRun : public OutputRun {
public:
    /// Frames go to `folder`. All arguments outlive the run.
    RenderRun(const Options& options, FrameQueue& queue, const std::string& folder,
              RunListener& listener);

    bool choose_range(int scene_length, int& first, int& last) override;
    void begin() override { listener->begun(frames); }
    int render(const std::function<int()>& render_all) override;
    int next_frame(const SameFrames& same) override;
    bool wants_frame(int frame, const KIVString& file,
                     const std::function<bool()>& is_there) override;
    void frame_ended(const FrameReport& report) override;
    AbortPanel* inq_abort_panel() override { return &stop; }
    bool looks_for_images() const override;
    bool leaves_unfinished() const override;
    bool is_rehearsal() const override;

private:
    /// -1 at the end.
    int next_place(const SameFrames& same);

    const Options& options;
    FrameQueue& queue;
    const std::string folder;
    RunListener* listener; // not owned
    int job = 0;
    std::vector<int> first_places; // dealt with before the queue is asked
    std::size_t n_first_done = 0;
    StopSignal stop;
    std::vector<int> frames;
    FrameBatch batch;
    int place = -1;
    std::chrono::steady_clock::time_point start;
};
