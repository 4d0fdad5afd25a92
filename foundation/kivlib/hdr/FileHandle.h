#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstddef>
#include <utility>

/// The system's words for the last failed call.
KIVString inq_system_error();

/// An open file, closed at the end of its life. Calls that a signal interrupted are made again.
class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : descriptor(descriptor) {}
    FileHandle(FileHandle&& other) noexcept : descriptor(std::exchange(other.descriptor, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle();

    static FileHandle open_to_read(const char* path);

    /// As `open_to_read`, but a symbolic link is refused.
    static FileHandle open_the_file_itself(const char* path);
    static FileHandle open_folder(const char* path);

    /// A new file, or one that is there and is emptied. A symbolic link is refused.
    static FileHandle open_to_write(const char* path, int permissions);

    /// A new file. Whatever has the name already is refused.
    static FileHandle create(const char* path, int permissions);

    bool is_open() const { return descriptor >= 0; }
    int inq_descriptor() const { return descriptor; }

    /// False if the file ends before, or can't be read.
    bool read_all(char* to, std::size_t size) const;
    bool write_all(const char* from, std::size_t size) const;
    bool rewind_and_empty() const;

    /// Waits until the disc holds what was written. What a failed sync has lost, a second one
    /// would not notice.
    bool sync() const;

    /// False if the system reports a late error of the writes.
    bool close();

private:
    int descriptor = -1;
};

/// Waits until the disc holds the names in a folder: files made, renamed and removed.
bool sync_folder(const KIVString& path);
