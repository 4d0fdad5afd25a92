#include "frontend/CMontaray/FrameQueue.h"

#include <atomic>
#include <climits>
#include <new>
#include <sys/mman.h>

namespace {
struct Hand {
    std::atomic<int> begin = 0;
    std::atomic<int> end = 0;
};
} // namespace

struct FrameQueue::Shared {
    std::atomic<int> next = 0;
    std::atomic<int> last = INT_MAX;

    Hand* hands() { return reinterpret_cast<Hand*>(this + 1); }

    static std::size_t inq_bytes(int jobs)
    {
        return sizeof(Shared) + static_cast<std::size_t>(jobs) * sizeof(Hand);
    }
};

FrameQueue::FrameQueue(int jobs) : jobs(jobs), shared(nullptr)
{
    void* memory = ::mmap(nullptr, Shared::inq_bytes(jobs), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    shared = new (memory) Shared;
    for (int job = 0; job < jobs; ++job)
        new (shared->hands() + job) Hand;
}

FrameQueue::~FrameQueue()
{
    if (shared)
        ::munmap(shared, Shared::inq_bytes(jobs));
}

// The hand is filled before the batch is taken: a process that is killed in between loses nothing,
// and at worst another one renders the batch as well.
FrameBatch FrameQueue::take(int job, int n_frames, const std::function<bool(int)>& goes_on)
{
    Hand& hand = shared->hands()[job];
    int begin = shared->next;
    int end = begin;
    do {
        if (begin >= n_frames)
            return {};
        end = begin + 1;
        while (end < n_frames && goes_on(end))
            ++end;
        hand.begin = begin;
        hand.end = end;
    } while (!shared->next.compare_exchange_weak(begin, end));
    return {begin, end};
}

FrameBatch FrameQueue::inq_in_hand(int job) const
{
    const Hand& hand = shared->hands()[job];
    return {hand.begin, hand.end};
}

void FrameQueue::end_at(int place)
{
    int last = shared->last;
    while (place < last && !shared->last.compare_exchange_weak(last, place)) {
    }
}

bool FrameQueue::is_wanted(int place) const
{
    return place <= shared->last;
}

bool FrameQueue::has_more(int n_frames) const
{
    const int next = shared->next;
    return next < n_frames && is_wanted(next);
}
