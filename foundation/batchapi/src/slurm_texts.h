#pragma once

#include "batchapi/hdr/BatchEngine.h"

// What is said to Slurm's commands, and what they say.

/// Indices as few lists such as "1-5,8", none longer than the service takes.
std::vector<KIVString> list_indices(const std::vector<int>& indices);

/// A path as the service wants it, with the index for "{task}" in the file's name. Empty if it has
/// no form for the path.
KIVString as_log_pattern(const KIVString& log);

/// What the query asks for each task.
inline constexpr char TASK_FORMAT[] = "%K %T %N"; // index, state, host

/// The tasks of an answer in TASK_FORMAT by ascending index: of several of one index the one that
/// has most before it. False if the answer is nothing of the sort.
bool read_tasks(std::string_view answer, std::vector<BatchTask>* tasks);

/// The highest index, from the list of the service's settings. False if it is not in it.
bool read_highest_index(std::string_view settings, int* index);

/// Whether this is the answer to a job that was taken: its number, and perhaps its cluster.
bool is_job_number(std::string_view answer);
