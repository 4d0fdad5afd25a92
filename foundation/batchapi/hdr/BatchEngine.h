#pragma once

#include "kivlib/hdr/KIVString.h"

#include <vector>

/// One command for the batch service, run once for each of its tasks, on whatever hosts the
/// service has. A job is known by its name alone.
struct BatchJob {
    KIVString name;                   // letters, digits, '.', '_' and '-'
    std::vector<KIVString> arguments; // the program first; a task gets its index as the last
    std::vector<int> tasks;           // their indices, from 0 and ascending
    KIVString folder;                 // absolute: where the tasks work
    KIVString log; // absolute: where a task's output goes. "{task}" in the file's
                   // name is its index; a second try adds to what is there
};

enum class BatchState {
    UNKNOWN, // the service has no such task, or calls its state by a strange name
    WAITING,
    RUNNING,
    ENDING, // has ended or was told to: it may still write, and takes up nothing new
    ENDED   // well or not: the service forgets such a task after a while
};

struct BatchTask {
    int index = 0;
    BatchState state = BatchState::UNKNOWN;
    KIVString host; // where it runs or ran, if it is known

    /// Whether anything of it may still run; also in a state of a strange name.
    bool is_alive() const { return state != BatchState::ENDED; }

    /// Whether what it is for may still come of it.
    bool is_on_its_way() const { return is_alive() && state != BatchState::ENDING; }
};

/// Whether any of them may still run.
bool is_alive(const std::vector<BatchTask>& tasks);

/// What really queues and runs the jobs. Wherever false is given, `*error` has words for the user.
class BatchEngine {
public:
    virtual ~BatchEngine() = default;

    /// After false the job may have been taken all the same, or a part of its tasks.
    virtual bool submit(const BatchJob& job, KIVString* error) = 0;

    /// The tasks of that name by ascending index, of several of one index the one that has most
    /// before it; none if the service knows no such job. False if the service did not answer.
    /// `user` is whose job it is, by name or number; empty: this program's user.
    virtual bool query(const KIVString& name, const KIVString& user, std::vector<BatchTask>* tasks,
                       KIVString* error) = 0;

    /// For jobs of this program's user: tasks that wait never start, and those that run are ended.
    /// True as well if there were none.
    virtual bool cancel(const KIVString& name, KIVString* error) = 0;

    /// The highest index that a task may have. False if the service did not answer.
    virtual bool inq_highest_index(int* index, KIVString* error) = 0;
};
