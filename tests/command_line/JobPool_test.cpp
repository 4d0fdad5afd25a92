#include "frontend/CMontaray/JobPool.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {
/// Notes in which order it hears of places, and which of them are lost.
struct Ear : RunListener {
    void begun(const std::vector<int>& /*frames*/) override {}
    void frame_ended(const FrameEvent& event) override
    {
        (event.loss.empty() ? told : lost).push_back(event.place);
    }

    std::vector<int> told;
    std::vector<int> lost;
};
} // namespace

TEST(JobPool, loses_just_the_frames_that_end_every_process)
{
    const std::vector<int> frames = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    for (const int batch : {1, 3}) {
        FrameQueue queue(2);
        const auto render = [](int place, RunListener& listener) {
            if (place % 4 == 2)
                ::raise(SIGKILL);
            FrameEvent event;
            event.place = place;
            listener.frame_ended(event);
        };
        const JobWork work = [&](int number, const std::vector<int>& first_places,
                                 RunListener& listener) {
            for (const int place : first_places)
                render(place, listener);
            const auto goes_on = [&](int place) { return place % batch != 0; };
            for (FrameBatch taken = queue.take(number, 16, goes_on); taken.begin < taken.end;
                 taken = queue.take(number, 16, goes_on))
                for (int place = taken.begin; place < taken.end; ++place)
                    render(place, listener);
        };
        Ear ear;
        EXPECT_EQ(JobPool(queue, ".", frames, work, ear).run(2), 0);
        EXPECT_EQ(ear.lost, (std::vector{2, 6, 10, 14})) << batch;
        EXPECT_EQ(ear.told, (std::vector{0, 1, 3, 4, 5, 7, 8, 9, 11, 12, 13, 15})) << batch;
    }
}
