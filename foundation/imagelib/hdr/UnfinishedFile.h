#pragma once

#include "kivlib/hdr/FileHandle.h"

#include <set>
#include <string>

/// A file that has its name only once it is whole. Until then it stands beside it under another
/// one, which tells whose it is, and goes away if it is not finished.
class UnfinishedFile {
public:
    UnfinishedFile() = default;
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile();

    // Each step gives false, with the system's error, if it can't be made.

    bool create(const KIVString& final_path);

    /// Open to be read and written.
    const FileHandle& inq_handle() const { return handle; }

    /// Waits for the disc. Nothing is written any more.
    bool close() { return handle.sync() && handle.close(); }

    /// Gives a closed file its name, in place of what had it.
    bool finish();

    /// Leaves the file under its other name, which is told, for somebody to bring it to the disc
    /// and rename it.
    bool leave(KIVString& other_path);

private:
    KIVString path;
    KIVString own_path; // empty while there is none
    FileHandle handle;
};

/// From now on the unfinished files of this process and of those forked from it belong together:
/// they are not abandoned as long as this process lives.
void share_unfinished_files();

/// Removes those in the folder whose process has ended, as far as that is certain: those of other
/// hosts stay, and those from before the last start of this one.
void remove_abandoned_files(const KIVString& folder);

/// Removes those in the folder that a process forked from this one left, but for the names in
/// `kept`.
void remove_unfinished_files(const KIVString& folder, int process,
                             const std::set<std::string>& kept);
