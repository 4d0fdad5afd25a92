#pragma once

#include <csignal>
#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

/// How a child process ended, and what it wrote down before.
template <class Notes> struct ChildEnd {
    Notes notes;
    bool was_killed = false; // by a fault
    bool was_well = false;
};

constexpr unsigned int LONGEST_CHILD = 60; // seconds; one that hangs is ended

/// Runs `work(notes)` in a child of this process. The notes are plain data in memory that both
/// share, so they outlive a child that is killed.
template <class Notes, class Work> ChildEnd<Notes> in_child(Work work)
{
    void* memory =
        ::mmap(nullptr, sizeof(Notes), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        std::abort();
    auto* notes = new (memory) Notes;
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(LONGEST_CHILD);
        work(*notes);
        ::_exit(EXIT_SUCCESS);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    const ChildEnd<Notes> end{*notes, WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL,
                              WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS};
    ::munmap(memory, sizeof(Notes));
    return end;
}
