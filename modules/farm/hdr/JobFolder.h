#pragma once

#include "modules/farm/hdr/FarmJob.h"

#include <filesystem>

/// A try at a chunk that left frames undone, as its line tells it.
struct FailedTry {
    std::string time;
    std::string host;
    int order = 0;  // of the job, that the try was for
    int number = 0; // of the try, from 1
    int result = 0; // of the renderer, or of TaskResult
    std::string frames;
    std::string reason;
    bool is_final = false; // no more tries for this order
};

/// By what the file of a frame is known again.
struct FrameFacts {
    std::int64_t size = 0; // bytes
    std::string time;      // of its last change
    std::string sum;       // of its contents

    /// None if there is no file that can be read.
    static std::optional<FrameFacts> look(const std::filesystem::path& file);

    /// Whether they are those of the file.
    bool are_of(const std::filesystem::path& file) const;
};

/// The folder of a render job, beside its frames: `.farm-KEY`. What is true of a frame stands in
/// files here, whatever the batch service believes; all hosts see them.
///
///     job.json     the job
///     done/0001    a frame that is done, and what its file looks like
///     fail/3       failed tries at chunk 3, a line each
///     log/3        what tasks for chunk 3 have said
///     tmp/         folders in which tries render
///     superseded   there if a later job makes the same files
class JobFolder {
public:
    explicit JobFolder(std::filesystem::path path) : path(std::move(path)) {}

    /// That of the job; it need not be there.
    static JobFolder of(const FarmJob& job);

    /// All those of an output folder, oldest order first, and before them those whose job can't be
    /// read. One that was copied or moved here is none: its job is that of another folder.
    static std::vector<JobFolder> list(const std::string& output);

    /// Makes the folders. Throws a `std::runtime_error`, as all that writes here does.
    void make() const;

    /// None while there is none, or if it can't be read, after some looks.
    std::optional<FarmJob> read_job() const;

    /// Whether there is one, though it may be damaged.
    bool has_job() const;

    /// Of the job with the batch service, whether or not it can be read.
    std::string inq_job_name() const;
    void write_job(const FarmJob& job) const;

    bool is_superseded() const;
    void set_superseded(bool superseded) const;

    /// Whether the frame's file is there as a task left it that knew the pictures of the job.
    bool is_done(const FarmJob& job, int frame) const;
    FrameSet inq_done(const FarmJob& job, const FrameSet& frames) const;

    /// All frames count as not done.
    void forget_done() const;

    /// The frame's file lies in its place. The job is the one that the task began with.
    void mark_done(const FarmJob& job, int frame, const FrameFacts& facts) const;

    std::vector<FailedTry> read_failures(int chunk) const;
    void add_failure(int chunk, const FailedTry& failed) const;
    void forget_failures() const;

    /// A new folder for a try of this process.
    std::filesystem::path make_scratch(int number) const;

    /// Removes what tries of this host have left whose processes are gone.
    void remove_dead_scratch() const;

    /// Removes what all tries have left: there must be none that runs.
    void remove_all_scratch() const;

    const std::filesystem::path& inq_path() const { return path; }
    std::filesystem::path inq_log(int chunk) const;

private:
    std::filesystem::path inq_marker(int frame) const;

    std::filesystem::path path;
};
