#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstdint>
#include <vector>

/// By what a file is told from the one that had its name at another time, without reading it.
struct FileFacts {
    std::uint64_t device = 0; // all zero: there is none
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0; // of the last change
    std::int64_t nanoseconds = 0;

    bool operator==(const FileFacts&) const = default;
    bool is_there() const { return inode != 0; }

    /// Whether the file at `path` is the same, and unchanged.
    bool are_of(const KIVString& path) const;
};

FileFacts inq_file_facts(const KIVString& path);

/// Those of all files that a load of the scene in `folder` may read.
std::vector<FileFacts> inq_scene_facts(const KIVString& folder);
