#pragma once

#include "kivlib/hdr/FileHandle.h"

/// A file that has its name only once it is whole. Until then it stands beside it under a name of
/// this process, and goes away if it is not finished.
class UnfinishedFile {
public:
    UnfinishedFile() = default;
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile();

    /// False, with the system's error, if it can't be made.
    bool create(const KIVString& final_path);

    /// Open to be read and written.
    const FileHandle& inq_handle() const { return handle; }

    /// Waits for the disc and gives it its name, in place of what had it.
    bool finish();

private:
    KIVString path;
    KIVString own_path; // empty while there is none
    FileHandle handle;
};
