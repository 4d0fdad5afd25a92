#pragma once

#include "modules/farm/hdr/JobFolder.h"

/// A task of the batch service: renders the frames of one chunk that are asked for and not done.
/// Any number of such tasks may run for one chunk, on any hosts, and each may end at any time.
class ChunkTask {
public:
    /// Exit codes of a task; where the renderer failed, it is the renderer's. With a signal: 128
    /// and its number.
    enum Result {
        DONE = 0,
        SCENE_CHANGED = 230,    // since the order
        RENDERER_DIFFERS = 231, // on this host
        NO_PLACE = 232,         // for the frames, or to note that they are done
        NO_JOB = 233,           // in the folder
        SUPERSEDED = 234,       // by a later job for the same files
        FRAMES_MISSING = 235,   // the renderer called it a success
        NO_SCENE = 236          // that could be read on this host
    };
    static constexpr int MOST_TRIES = 3; // for one order

    ChunkTask(const JobFolder& folder, int chunk) : folder(folder), chunk(chunk) {}

    int run();

    struct Try {
        int result = 0;
        std::string reason;
    };

private:
    Try render(const FarmJob& job, const FrameSet& frames, int number);
    Try render_into(const std::filesystem::path& scratch, const FarmJob& job,
                    const FrameSet& frames);
    void publish(const std::filesystem::path& scratch, const FarmJob& job, const FrameSet& frames);
    void note_failure(const FarmJob& job, const FrameSet& frames, int number, const Try& tried);

    JobFolder folder;
    int chunk;
};
