#pragma once

#include "kivlib/hdr/KIVString.h"

/// What reading and writing streams share: a name, a sticky error and a position. After its first
/// error a stream moves nothing more; nothing here throws.
class KIVStream {
public:
    enum rw_state { READING, WRITING };

    /// Error states, in `inq_error_state()`. The first one stays.
    enum {
        OKAY = 0,
        CANT_OPEN,
        CANT_READ,
        CANT_WRITE,
        FOREIGN_FILE,
        NEWER_CONTAINER,
        BAD_CHECKSUM,
        ENDED,
        BAD_HEADER,
        UNKNOWN_CLASS,
        NEWER_CLASS,
        WRONG_CLASS,
        OWNED_TWICE,
        TOO_DEEP,
        BAD_COUNT,
        BAD_NUMBER,
        NO_MEMORY,
        BAD_DATA
    };

    KIVStream() = default;
    KIVStream(const KIVStream&) = delete;
    KIVStream& operator=(const KIVStream&) = delete;

    virtual ~KIVStream() = default;
    virtual KIVString inq_file_name() const { return {}; }

    /// True if the stream is in error and the user has been told, once. A writing stream first
    /// brings what it holds to the disc.
    virtual bool alert_user_if_error() const;
    virtual void alert_user() const;
    virtual rw_state inq_rw_state() = 0;
    virtual void set_error_state(int state);
    virtual int inq_error_state() const { return error_state; }

    /// For a loop that polls; valid as long as the stream.
    virtual const int* addr_error_state() const { return &error_state; }
    virtual long getpos() const { return 0; }
    virtual void setpos(long) {}
    virtual bool inq_interprocess_stream() const { return false; }
    virtual int inq_target_pid() const { return 0; }

    /// As `set_error_state`, with what the user should know besides, such as a class name.
    void set_error(int state, const KIVString& detail);
    const KIVString& inq_error_detail() const { return error_detail; }

private:
    int error_state = OKAY;
    KIVString error_detail;
    mutable bool user_was_told = false;
};
