#include "batchapi/hdr/BatchEngine.h"

bool is_alive(const std::vector<BatchTask>& tasks)
{
    return std::ranges::any_of(tasks, &BatchTask::is_alive);
}
