#pragma once

#include "frontend/CMontaray/RunListener.h"
#include "kivlib/hdr/FileHandle.h"

#include <functional>
#include <sys/types.h>

/// Does a process's part of the run.
using JobWork =
    std::function<void(int job, const std::vector<int>& first_places, RunListener& listener)>;

/// A process that renders, as the one that started it sees it.
struct Job {
    /// Not started if its pid is below 0.
    static Job start(int number, const std::vector<int>& first_places, const JobWork& work);

    /// Reads what has come. False once the process has closed its end.
    bool read();

    int number = 0;
    pid_t pid = -1;
    FileHandle pipe;
    std::string bytes;             // that came and were not looked at yet
    std::vector<int> first_places; // that an earlier process lost
};
