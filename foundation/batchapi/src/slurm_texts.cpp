#include "batchapi/src/slurm_texts.h"

#include <charconv>
#include <tuple>

namespace {
constexpr std::size_t LONGEST_LIST = 4096;

KIVString name_of_run(int first, int last)
{
    return first == last ? KIVString(first, 0) : KIVString(first, 0) + "-" + KIVString(last, 0);
}

/// Indices in a row that start at `at`.
std::size_t end_of_run(const std::vector<int>& indices, std::size_t at)
{
    std::size_t end = at + 1;
    while (end < indices.size() && indices[end] == indices[end - 1] + 1)
        ++end;
    return end;
}

/// The part before `separator`, which is taken off `text` with it.
std::string_view take_to(char separator, std::string_view& text)
{
    const std::string_view part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

bool read_number(std::string_view text, int* number)
{
    const char* end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && behind == end && *number >= 0;
}

struct StateName {
    std::string_view name;
    BatchState state;
};

constexpr StateName STATES[] = {
    {"PENDING", BatchState::WAITING},      {"CONFIGURING", BatchState::WAITING},
    {"REQUEUED", BatchState::WAITING},     {"REQUEUE_FED", BatchState::WAITING},
    {"REQUEUE_HOLD", BatchState::WAITING}, {"RESV_DEL_HOLD", BatchState::WAITING},
    {"SPECIAL_EXIT", BatchState::WAITING}, {"RUNNING", BatchState::RUNNING},
    {"COMPLETING", BatchState::ENDING},    {"RESIZING", BatchState::RUNNING},
    {"SIGNALING", BatchState::RUNNING},    {"STAGE_OUT", BatchState::RUNNING},
    {"STOPPED", BatchState::RUNNING},      {"SUSPENDED", BatchState::RUNNING},
    {"BOOT_FAIL", BatchState::ENDED},      {"CANCELLED", BatchState::ENDED},
    {"COMPLETED", BatchState::ENDED},      {"DEADLINE", BatchState::ENDED},
    {"FAILED", BatchState::ENDED},         {"LAUNCH_FAILED", BatchState::ENDED},
    {"NODE_FAIL", BatchState::ENDED},      {"OUT_OF_MEMORY", BatchState::ENDED},
    {"PREEMPTED", BatchState::ENDED},      {"RECONFIG_FAIL", BatchState::ENDED},
    {"REVOKED", BatchState::ENDED},        {"TIMEOUT", BatchState::ENDED}};

BatchState find_state(std::string_view name)
{
    const auto* known = std::ranges::find(STATES, name, &StateName::name);
    return known == std::end(STATES) ? BatchState::UNKNOWN : known->state;
}

bool is_state_name(std::string_view name)
{
    return !name.empty() &&
           std::ranges::all_of(name, [](char c) { return ('A' <= c && c <= 'Z') || c == '_'; });
}

bool read_task(std::string_view line, std::vector<BatchTask>* tasks)
{
    const std::string_view index = take_to(' ', line);
    const std::string_view state = take_to(' ', line);
    if (!is_state_name(state) || line.find(' ') != std::string_view::npos)
        return false;
    BatchTask task{0, find_state(state), line};
    if (index == "N/A" && !task.is_alive())
        return true; // tasks that were cancelled together before they ran
    if (!read_number(index, &task.index))
        return false;
    tasks->push_back(task);
    return true;
}

/// By index, and the states in their order.
bool comes_first(const BatchTask& a, const BatchTask& b)
{
    return std::tie(a.index, a.state) < std::tie(b.index, b.state);
}
} // namespace

std::vector<KIVString> list_indices(const std::vector<int>& indices)
{
    std::vector<KIVString> lists;
    for (std::size_t at = 0; at < indices.size();) {
        const std::size_t end = end_of_run(indices, at);
        const KIVString run = name_of_run(indices[at], indices[end - 1]);
        if (lists.empty() || lists.back().str().size() + 1 + run.str().size() > LONGEST_LIST)
            lists.push_back(run);
        else
            lists.back() += "," + run;
        at = end;
    }
    return lists;
}

KIVString as_log_pattern(const KIVString& log)
{
    constexpr std::string_view TASK = "{task}";
    if (log.str().find('\\') != std::string::npos)
        return {}; // it would turn all signs of the pattern into text, and vanish
    KIVString pattern;
    std::string_view left = log;
    const std::size_t length_of_name = left.size() - (left.find_last_of('/') + 1);
    while (!left.empty()) {
        const bool is_task = left.size() <= length_of_name && left.starts_with(TASK);
        pattern += is_task ? "%a" : left.front() == '%' ? "%%" : KIVString(left.substr(0, 1));
        left.remove_prefix(is_task ? TASK.size() : 1);
    }
    return pattern;
}

bool read_tasks(std::string_view answer, std::vector<BatchTask>* tasks)
{
    tasks->clear();
    while (!answer.empty())
        if (!read_task(take_to('\n', answer), tasks))
            return false;
    std::ranges::sort(*tasks, comes_first);
    const auto others = std::ranges::unique(*tasks, {}, &BatchTask::index);
    tasks->erase(others.begin(), others.end());
    return true;
}

bool read_highest_index(std::string_view settings, int* index)
{
    constexpr std::string_view NAME = "MaxArraySize";
    while (!settings.empty()) {
        const std::string_view line = take_to('\n', settings);
        if (!line.starts_with(NAME))
            continue;
        const std::size_t value = line.find_last_of(' ') + 1;
        int size = 0;
        if (!read_number(line.substr(value), &size))
            return false;
        *index = size - 1;
        return true;
    }
    return false;
}

bool is_job_number(std::string_view answer)
{
    int number = 0;
    std::string_view line = take_to('\n', answer);
    return answer.empty() && read_number(take_to(';', line), &number) && number > 0;
}
