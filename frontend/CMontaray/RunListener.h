#pragma once

#include "render/hdr/OutputRun.h"

#include <string>
#include <vector>

/// A frame of the list has been dealt with.
struct FrameEvent {
    int place = 0; // in the list of frames
    FrameReport report;
    double seconds = 0.0;
    long peak_memory = 0; // bytes of the process, so far
    std::string said;     // on the console, for somebody else to print
    std::string loss;     // why nothing else is known of the frame; empty: it is not lost
};

/// Hears what happens in a run.
class RunListener {
public:
    virtual ~RunListener() = default;
    virtual void begun(const std::vector<int>& frames) = 0;
    virtual void frame_ended(const FrameEvent& event) = 0;
};
