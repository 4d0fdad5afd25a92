#pragma once

#include "modules/farm/hdr/JobFolder.h"
#include "modules/farm/hdr/RenderWords.h"

class BatchManager;
class BatchSceneInfo;
enum class BatchState;

/// The programs of a farm. Every host has them at the same places.
struct FarmPrograms {
    /// Those that are installed beside the library. Throws a `std::runtime_error` if one is not.
    static FarmPrograms find();

    std::string renderer;
    std::string task;
};

/// An order of frames: makes or goes on with the job folder, and sends tasks for what is neither
/// done nor on its way.
class Submission {
public:
    Submission(BatchManager& manager, FarmPrograms programs)
        : manager(manager), programs(std::move(programs))
    {}

    /// Says what was done, in words for the user. Throws a `std::runtime_error` that says why
    /// nothing could be.
    std::string submit(const RenderWords& words, const BatchSceneInfo& info);

private:
    FarmJob make_job(const RenderWords& words, const BatchSceneInfo& info) const;
    std::map<int, BatchState> find_own_tasks(const FarmJob& job) const;
    std::set<int> find_chunks_on_their_way(const FarmJob& job) const;
    void choose_chunk_size(FarmJob& job, const FarmJob& before, const RenderWords& words,
                           bool is_idle) const;
    std::string supersede_others(const FarmJob& job) const;
    std::string send_missing(const FarmJob& job, const FrameSet& frames) const;
    void send(const FarmJob& job, const std::set<int>& chunks) const;

    BatchManager& manager;
    FarmPrograms programs;
};
