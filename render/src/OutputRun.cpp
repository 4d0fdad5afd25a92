#include "render/hdr/OutputRun.h"

bool OutputRun::choose_range(int scene_length, int& first_frame, int& last_frame)
{
    next = first_frame;
    last = last_frame;
    return last_frame >= first_frame && last_frame <= scene_length;
}

int OutputRun::next_frame(const SameFrames&)
{
    return next <= last ? next++ : 0;
}

bool OutputRun::wants_frame(int, const KIVString&, const std::function<bool()>&)
{
    return true;
}
