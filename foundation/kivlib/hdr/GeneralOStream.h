#pragma once

#include "kivlib/hdr/CharOStream.h"
#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/FileHandle.h"

/// Writes a file of objects. What is inserted is held in memory and reaches the file, whole, when
/// the stream is flushed, asked for errors or closed; closing is by deleting the stream.
class GeneralOStream : public CharOStream {
public:
    /// Creates the file, or empties the one that is there. A symbolic link is not followed.
    explicit GeneralOStream(const char* path, int permissions = 0666);
    ~GeneralOStream() override;

    KIVString inq_file_name() const override { return path; }

    /// Flushes and, unless somebody else will, syncs first, so that a full disc is seen here.
    bool alert_user_if_error() const override;
    void close() override;
    void flush() override;

    /// What was flushed.
    const FileSum& inq_sum() const { return sum; }

    /// The file, flushed, for somebody who will sync and close it. The stream is at its end.
    FileHandle take_file();

protected:
    enum Syncing { SYNCS, LEAVES_SYNCING };

    /// On an empty file that was just opened, or tried to.
    GeneralOStream(const char* path, FileHandle opened, Syncing syncing = SYNCS);

private:
    void sync();

    KIVString path;
    FileHandle file;
    Syncing syncing;
    FileSum sum{0, Checksum().get()};
    std::size_t flushed = 0; // bytes of the payload that are in the file
    bool is_synced = true;
};
