#include "frontend/CMontaray/RenderRun.h"

#include "frontend/CMontaray/JobPool.h"
#include "frontend/CMontaray/Options.h"
#include "kivlib/hdr/ConsoleOStream.h"

#include <algorithm>
#include <numeric>
#include <sys/resource.h>

namespace {
long inq_peak_memory()
{
    constexpr long KIBIBYTE = 1024;
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * KIBIBYTE;
}
} // namespace

RenderRun::RenderRun(const Options& options, FrameQueue& queue, const std::string& folder,
                     RunListener& listener)
    : options(options), queue(queue), folder(folder), listener(&listener)
{}

bool RenderRun::choose_range(int scene_length, int& first, int& last)
{
    if (options.frames) {
        if (options.frames->inq_last() > scene_length && !options.clamp)
            return false;
        frames = options.frames->list_frames(scene_length);
        if (frames.empty())
            return false;
        first = *std::ranges::min_element(frames);
        last = *std::ranges::max_element(frames);
        return true;
    }
    if (options.clamp)
        last = std::min(last, scene_length);
    if (!OutputRun::choose_range(scene_length, first, last))
        return false;
    frames.resize(static_cast<std::size_t>(last - first + 1));
    std::iota(frames.begin(), frames.end(), first);
    return true;
}

int RenderRun::render(const std::function<int()>& render_all)
{
    if (options.jobs == 1)
        return render_all();
    const JobWork work = [&](int number, const std::vector<int>& places, RunListener& teller) {
        job = number;
        first_places = places;
        listener = &teller;
        render_all();
    };
    return JobPool(queue, folder, frames, work, *listener).run(options.jobs);
}

int RenderRun::next_place(const SameFrames& same)
{
    if (n_first_done < first_places.size())
        return first_places[n_first_done++];
    if (batch.begin == batch.end)
        batch = queue.take(job, static_cast<int>(frames.size()), [&](int next) {
            const auto at = static_cast<std::size_t>(next);
            return same(frames[at - 1], frames[at]);
        });
    return batch.begin < batch.end ? batch.begin++ : -1;
}

int RenderRun::next_frame(const SameFrames& same)
{
    place = stop.inq_abort() ? -1 : next_place(same);
    if (place < 0 || !queue.is_wanted(place))
        return 0;
    start = std::chrono::steady_clock::now();
    return frames[static_cast<std::size_t>(place)];
}

bool RenderRun::wants_frame(int frame, const KIVString& file, const std::function<bool()>& is_there)
{
    if (options.skip_existing && is_there()) {
        if (options.dry_run)
            *coutp << "Frame " << frame << " is there: " << file << "\n";
        return false;
    }
    if (options.dry_run)
        *coutp << "Would render frame " << frame << ": " << file << "\n";
    return !options.dry_run;
}

void RenderRun::frame_ended(const FrameReport& report)
{
    if (report.outcome == FrameReport::NO_PIXMAP && stop.inq_abort())
        return;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    FrameEvent event;
    event.place = place;
    event.report = report;
    event.seconds = time.count();
    event.peak_memory = inq_peak_memory();
    if (report.result != 0)
        queue.end_at(place);
    listener->frame_ended(event);
}

bool RenderRun::looks_for_images() const
{
    return options.strict || options.dry_run;
}

// One process alone would not come to the frames behind one that can't be written, so theirs must
// not replace anything before their turn.
bool RenderRun::leaves_unfinished() const
{
    return options.jobs > 1;
}

bool RenderRun::is_rehearsal() const
{
    return options.dry_run;
}
