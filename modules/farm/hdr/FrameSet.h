#pragma once

#include <set>
#include <string>
#include <vector>

/// Frames of a scene, from 1.
using FrameSet = std::set<int>;

/// Frames without a gap between them.
struct FrameRun {
    int first;
    int last;
};

FrameSet inq_frames(const FrameRun& run);
std::vector<FrameRun> inq_runs(const FrameSet& frames);

/// Such as 1-8,12: as CMontaray takes it and as people read it.
std::string inq_text(const FrameSet& frames);

/// Of four digits or more, as the files of frames are named.
std::string inq_number_text(int frame);

FrameSet without(FrameSet frames, const FrameSet& others);

/// The frames of a scene in pieces of one size, counted from 0. The cuts are the same whatever
/// frames are wanted, so the chunks of one order are those of the next.
class ChunkPlan {
public:
    explicit ChunkPlan(int size) : size(size) {}

    int inq_chunk_of(int frame) const { return (frame - 1) / size; }
    FrameRun inq_run(int chunk) const { return {chunk * size + 1, (chunk + 1) * size}; }

    /// Those of `frames` that are in the chunk.
    FrameSet cut(const FrameSet& frames, int chunk) const;

    /// The chunks that `frames` are in.
    std::set<int> inq_chunks(const FrameSet& frames) const;

private:
    int size;
};
