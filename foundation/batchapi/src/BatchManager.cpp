#include "batchapi/hdr/BatchManager.h"

namespace {
/// No more than a name: commands of a service take lists, patterns and nothing at all for
/// everything.
bool is_plain_name(const KIVString& name)
{
    return !name.is_null() && std::ranges::all_of(name.str(), [](char c) {
        return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || ('0' <= c && c <= '9') ||
               c == '.' || c == '_' || c == '-';
    });
}

bool is_ascending(const std::vector<int>& tasks)
{
    return tasks.front() >= 0 &&
           std::ranges::adjacent_find(tasks, std::greater_equal<>()) == tasks.end();
}

/// What is wrong with a job; empty if nothing.
KIVString find_fault(const BatchJob& job)
{
    if (job.arguments.empty())
        return "A job needs a command.";
    if (job.tasks.empty() || !is_ascending(job.tasks))
        return "A job needs tasks, in ascending order.";
    if (!job.folder.str().starts_with('/') || !job.log.str().starts_with('/'))
        return "A job needs a folder to work in and a log.";
    return {};
}

bool has_on_its_way(const std::vector<BatchTask>& tasks, const std::vector<int>& indices)
{
    return std::ranges::any_of(tasks, [&](const BatchTask& task) {
        return task.is_on_its_way() && std::ranges::binary_search(indices, task.index);
    });
}

bool has_all(const std::vector<BatchTask>& tasks, const std::vector<int>& indices)
{
    return std::ranges::includes(tasks, indices, {}, &BatchTask::index);
}

/// Without what is left of tasks that were there before: a job is sent when none of its own is on
/// its way.
std::vector<BatchTask> find_new(std::vector<BatchTask> tasks, const std::vector<BatchTask>& before)
{
    std::erase_if(tasks, [&](const BatchTask& task) {
        return !task.is_on_its_way() &&
               std::ranges::binary_search(before, task.index, {}, &BatchTask::index);
    });
    return tasks;
}
} // namespace

BatchManager* BatchManager::inq_batch_manager()
{
    static BatchManager manager;
    return &manager;
}

bool BatchManager::submit(const BatchJob& job, KIVString* error)
{
    *error = find_fault(job);
    if (!error->is_null())
        return false;
    std::vector<BatchTask> tasks;
    if (!query(job.name, &tasks, error))
        return false;
    if (has_on_its_way(tasks, job.tasks)) {
        *error = "The job " + job.name + " is in the queue already.";
        return false;
    }
    return engine->submit(job, error) || is_taken_after_all(job, tasks, error);
}

/// The service may have taken the job and the answer been lost. A job that it took in part goes,
/// unless others that it took before would go with it.
bool BatchManager::is_taken_after_all(const BatchJob& job, const std::vector<BatchTask>& before,
                                      KIVString* error)
{
    std::vector<BatchTask> tasks;
    KIVString second_error;
    if (!query(job.name, &tasks, &second_error)) {
        *error += " The job " + job.name + " may have been taken all the same: " + second_error;
        return false;
    }
    tasks = find_new(std::move(tasks), before);
    if (has_all(tasks, job.tasks))
        return true;
    if (!has_on_its_way(tasks, job.tasks))
        return false;
    if (is_alive(before))
        *error += " A part of the job " + job.name + " was taken.";
    else if (!cancel(job.name, &second_error))
        *error += " A part of the job " + job.name + " was taken: " + second_error;
    return false;
}

bool BatchManager::query(const KIVString& name, const KIVString& user,
                         std::vector<BatchTask>* tasks, KIVString* error)
{
    tasks->clear();
    if (!can_ask(name, error))
        return false;
    if (!user.is_null() && !is_plain_name(user)) {
        *error = "\"" + user + "\" can not be the name of a user.";
        return false;
    }
    return engine->query(name, user, tasks, error);
}

bool BatchManager::cancel(const KIVString& name, KIVString* error)
{
    return can_ask(name, error) && engine->cancel(name, error);
}

bool BatchManager::inq_highest_index(int* index, KIVString* error)
{
    return can_ask(error) && engine->inq_highest_index(index, error);
}

bool BatchManager::can_ask(KIVString* error) const
{
    if (!engine)
        *error = "No batch service is installed.";
    return engine != nullptr;
}

bool BatchManager::can_ask(const KIVString& name, KIVString* error) const
{
    if (!can_ask(error))
        return false;
    if (!is_plain_name(name))
        *error = "\"" + name + "\" can not be the name of a job.";
    return is_plain_name(name);
}
