#pragma once

#include "kivlib/hdr/KIVString.h"

#include <vector>

/// A command for the batch service, known by a name of the caller's choice.
struct BatchJob {
    KIVString name;
    std::vector<KIVString> arguments; // the program first
};

enum class BatchState {
    UNKNOWN, // never taken, or forgotten
    WAITING,
    RUNNING,
    ENDED
};

/// What really queues and runs the jobs.
class BatchEngine {
public:
    virtual ~BatchEngine() = default;

    /// False with words in `*error` if the job was not taken.
    virtual bool submit(const BatchJob& job, KIVString* error) = 0;
    virtual BatchState query(const KIVString& name) = 0;

    /// False if there was nothing to cancel.
    virtual bool cancel(const KIVString& name) = 0;
};
