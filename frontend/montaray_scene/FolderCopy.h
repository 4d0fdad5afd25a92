#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

/// Copies all that lies in a folder into another one, and brings it to the disc. Every operation
/// throws a `std::runtime_error` at the first failure.
class FolderCopy {
public:
    /// `from` and `to` are there. Files directly in `from` with a name of `left_out` stay behind.
    FolderCopy(std::filesystem::path from, std::filesystem::path to, std::set<std::string> left_out)
        : from(std::move(from)), to(std::move(to)), left_out(std::move(left_out))
    {}

    void run();

    /// What is neither file nor folder nor link, such as a pipe, and was left out.
    const std::vector<std::string>& inq_passed_over() const { return passed_over; }

private:
    void copy(const std::filesystem::directory_entry& entry);
    void sync_folders() const;

    std::filesystem::path from;
    std::filesystem::path to;
    std::set<std::string> left_out;
    std::vector<std::filesystem::path> folders{to}; // that were written to, outer ones first
    std::vector<std::string> passed_over;
};

/// Throws a `std::runtime_error` with the system's words.
[[noreturn]] void throw_system_error(const std::string& what);
