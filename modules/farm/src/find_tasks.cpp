#include "modules/farm/src/find_tasks.h"

#include "batchapi/hdr/BatchManager.h"

std::map<int, BatchState> find_tasks(BatchManager& manager, const std::string& job,
                                     const std::string& user, std::string& error)
{
    std::vector<BatchTask> tasks;
    KIVString words;
    if (!manager.query(job, user, &tasks, &words))
        error = words.str();
    std::map<int, BatchState> chunks;
    for (const BatchTask& task : tasks)
        if (task.is_alive())
            chunks[task.index] = task.state;
    return chunks;
}
