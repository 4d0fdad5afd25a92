#pragma once

#include "kivlib/hdr/FileHandle.h"

#include <chrono>

/// An advisory lock on a folder, between processes: many may read it, or one may change it.
class FolderLock {
public:
    enum Kind { SHARED, EXCLUSIVE };
    enum Result {
        HELD,
        BUSY,       // others hold it and did not let go
        UNSUPPORTED // the file system has no locks, or does not let us try
    };

    /// Waits for others, within bounds. A lock that is held already is given up first.
    Result take(const KIVString& folder, Kind kind);
    void release();

    /// Lets others read too.
    void share() const;
    bool is_held() const { return file.is_open(); }

    /// How long `take` waits at most; 10 s at first.
    static void set_patience(std::chrono::milliseconds most);

private:
    FileHandle file;
};
