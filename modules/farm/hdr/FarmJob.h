#pragma once

#include "modules/farm/hdr/FrameSet.h"

#include <map>
#include <optional>

/// A render job as its folder keeps it: all that a task on any host needs. The key stands for what
/// the frames will look like and where they lie; which ones are wanted may grow from one order
/// to the next.
struct FarmJob {
    static constexpr char NAME_PREFIX[] = "render-";
    static constexpr int MOST_FRAMES = 1'000'000; // of the scene

    std::string renderer; // the program
    std::string renderer_print;
    std::string scene;
    std::string scene_print;
    std::map<std::string, std::string> shown; // files that the scene refers to, with their prints
    int pictures = 0;                         // counts the orders that found one of them changed
    std::string output;                       // the folder of the frames
    std::vector<std::string> options;

    int scene_length = 0; // in frames
    std::string extension;
    int width = 0; // of a frame, in pixels
    int height = 0;

    FrameSet asked; // by all orders
    int chunk_size = 0;
    int order = 0; // counts the orders that found frames undone
    std::string ordered_at;
    std::string user; // who made the order, and whose tasks there are

    std::string inq_key() const;
    std::string inq_name() const { return NAME_PREFIX + inq_key(); } // with the batch service
    ChunkPlan inq_plan() const { return ChunkPlan(chunk_size); }

    /// Whether frames without some of their pictures are none.
    bool is_strict() const;

    /// The name of its file, such as 0001.tif.
    std::string inq_file_name(int frame) const;

    /// A shown file that is not as it was; empty if all are. One that has come may pass: no frame
    /// of a strict job shows it until it is ordered again.
    std::string find_changed_file(bool may_have_come) const;

    /// Whether both are of one sequence or a file has the same name in both, if they are in the
    /// same folder.
    bool makes_files_of(const FarmJob& other) const;

    std::string inq_text() const;

    /// None if the text is no job.
    static std::optional<FarmJob> parse(const std::string& text);
};

/// Now, in UTC, as 2000-01-01T00:00:00Z.
std::string inq_time_text();
