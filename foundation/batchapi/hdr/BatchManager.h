#pragma once

#include "batchapi/hdr/BatchEngine.h"

#include <memory>

/// The entry of the batch service. Until a module gives it an engine it takes no job.
class BatchManager {
public:
    static BatchManager* inq_batch_manager();

    /// Takes the engine over; null takes it away.
    void set_engine(std::unique_ptr<BatchEngine> new_engine) { engine = std::move(new_engine); }
    bool inq_has_engine() const { return engine != nullptr; }

    /// False with words in `*error` if the job was not taken. A name that waits or runs already
    /// is not taken twice.
    bool submit(const BatchJob& job, KIVString* error);
    BatchState query(const KIVString& name);
    bool cancel(const KIVString& name);

private:
    std::unique_ptr<BatchEngine> engine;
};
