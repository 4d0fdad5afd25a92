#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstddef>
#include <cstdint>
#include <optional>

struct XXH3_state_s;

/// XXH3 of 64 bits over bytes as they come.
class Checksum {
public:
    using Value = std::uint64_t;

    Checksum();
    ~Checksum();
    Checksum(const Checksum&) = delete;
    Checksum& operator=(const Checksum&) = delete;

    void add(const void* bytes, std::size_t size);

    /// Of the bytes so far; more may follow.
    Value get() const;

private:
    XXH3_state_s* state;
};

/// By what the contents of a file are known again.
struct FileSum {
    std::uint64_t size = 0; // in bytes
    Checksum::Value sum = 0;

    bool operator==(const FileSum&) const = default;
};

/// Of a regular file; none if it can't be read. A symbolic link is not followed.
std::optional<FileSum> inq_file_sum(const KIVString& path);
