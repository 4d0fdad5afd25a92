#pragma once

#include "batchapi/hdr/BatchEngine.h"

#include <memory>

/// The entry of the batch service. Until a module gives it an engine it takes no job. Wherever
/// false is given, `*error` has words for the user.
class BatchManager {
public:
    static BatchManager* inq_batch_manager();

    /// Takes the engine over; null takes it away.
    void set_engine(std::unique_ptr<BatchEngine> new_engine) { engine = std::move(new_engine); }
    bool inq_has_engine() const { return engine != nullptr; }

    /// False if the job was not taken; nothing of it is left with the service then, unless the
    /// words say so. A job with a task that waits or runs already under its name is not taken; it
    /// may have further ones, and may have again one that is ending.
    bool submit(const BatchJob& job, KIVString* error);

    /// As the engine's operations of these names.
    bool query(const KIVString& name, const KIVString& user, std::vector<BatchTask>* tasks,
               KIVString* error);
    bool query(const KIVString& name, std::vector<BatchTask>* tasks, KIVString* error)
    {
        return query(name, {}, tasks, error);
    }
    bool cancel(const KIVString& name, KIVString* error);
    bool inq_highest_index(int* index, KIVString* error);

private:
    bool is_taken_after_all(const BatchJob& job, const std::vector<BatchTask>& before,
                            KIVString* error);
    bool can_ask(KIVString* error) const;
    bool can_ask(const KIVString& name, KIVString* error) const;

    std::unique_ptr<BatchEngine> engine;
};
