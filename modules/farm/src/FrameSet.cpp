#include "modules/farm/hdr/FrameSet.h"

#include "kivlib/hdr/KIVString.h"

FrameSet inq_frames(const FrameRun& run)
{
    FrameSet frames;
    for (int frame = run.first; frame <= run.last; ++frame)
        frames.insert(frames.end(), frame);
    return frames;
}

std::vector<FrameRun> inq_runs(const FrameSet& frames)
{
    std::vector<FrameRun> runs;
    for (const int frame : frames)
        if (!runs.empty() && runs.back().last == frame - 1)
            runs.back().last = frame;
        else
            runs.push_back({frame, frame});
    return runs;
}

std::string inq_number_text(int frame)
{
    constexpr int WIDTH = 4;
    return KIVString(frame, WIDTH).str();
}

std::string inq_text(const FrameSet& frames)
{
    std::string text;
    for (const auto [first, last] : inq_runs(frames))
        text += (text.empty() ? "" : ",") + std::to_string(first) +
                (first == last ? "" : "-" + std::to_string(last));
    return text;
}

FrameSet without(FrameSet frames, const FrameSet& others)
{
    for (const int frame : others)
        frames.erase(frame);
    return frames;
}

FrameSet ChunkPlan::cut(const FrameSet& frames, int chunk) const
{
    const auto [first, last] = inq_run(chunk);
    return {frames.lower_bound(first), frames.upper_bound(last)};
}

std::set<int> ChunkPlan::inq_chunks(const FrameSet& frames) const
{
    std::set<int> chunks;
    for (const int frame : frames)
        chunks.insert(chunks.end(), inq_chunk_of(frame));
    return chunks;
}
