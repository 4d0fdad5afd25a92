#include "batchapi/hdr/BatchManager.h"

BatchManager* BatchManager::inq_batch_manager()
{
    static BatchManager manager;
    return &manager;
}

bool BatchManager::submit(const BatchJob& job, KIVString* error)
{
    if (!engine) {
        *error = "No batch service is installed.";
        return false;
    }
    if (job.name.is_null() || job.arguments.empty()) {
        *error = "A job needs a name and a command.";
        return false;
    }
    const BatchState state = engine->query(job.name);
    if (state == BatchState::WAITING || state == BatchState::RUNNING) {
        *error = "The job " + job.name + " is in the queue already.";
        return false;
    }
    return engine->submit(job, error);
}

BatchState BatchManager::query(const KIVString& name)
{
    return engine ? engine->query(name) : BatchState::UNKNOWN;
}

bool BatchManager::cancel(const KIVString& name)
{
    return engine && engine->cancel(name);
}
