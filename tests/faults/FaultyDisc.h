#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// Kinds of call that a process makes to the disc. INSPECT asks what is there, or what it is like.
enum class DiscCall {
    OPEN,
    READ,
    WRITE,
    SYNC,
    CLOSE,
    RENAME,
    UNLINK,
    MAKE,
    TRUNCATE,
    LOCK,
    INSPECT
};

inline constexpr std::array DISC_CALLS = {DiscCall::OPEN,   DiscCall::READ,   DiscCall::WRITE,
                                          DiscCall::SYNC,   DiscCall::CLOSE,  DiscCall::RENAME,
                                          DiscCall::UNLINK, DiscCall::MAKE,   DiscCall::TRUNCATE,
                                          DiscCall::LOCK,   DiscCall::INSPECT};

const char* inq_name(DiscCall call);

/// What goes wrong with the `nth` call of a kind, counted from 1.
struct Fault {
    enum Manner {
        REFUSE,                 // the call fails with `error`
        REFUSE_FROM_NOW,        // and so do all later ones of its kind
        DISC_DIES,              // and so do all later ones of every kind
        WRITE_HALF,             // a short write, of one byte at least
        WRITE_HALF_THEN_REFUSE, // and the writes behind it fail
        KILL_BEFORE,            // the process ends before the call
        KILL_AFTER              // or behind it
    };

    DiscCall call;
    int nth;
    Manner manner;
    int error = 0;

    std::string inq_words() const;
};

/// One change of the disc as it was made, with all that is needed to make it again.
struct DiscStep {
    enum Kind { MADE_FOLDER, OPENED, WROTE, TRUNCATED, SYNCED, RENAMED, LINKED, UNLINKED };

    Kind kind;
    std::string path; // within the folder that is watched
    std::string new_path = {};
    int descriptor = -1;
    bool is_new = false; // an opened file was not there
    std::int64_t at = 0; // where it was written, or cut off
    std::string bytes = {};
};

/// The disc under one folder, seen through the calls that this process makes to the C library.
/// Nothing ever waits for the true disc: a sync is counted, and done at once.
namespace FaultyDisc {
/// From now on calls that touch `folder`, or what lies in it, are counted from 0 and written down.
void watch(const std::string& folder);

/// One fault at a time, and none at first.
void arm(const Fault& fault);
bool has_fired();

/// Every lock is refused with this error; 0 for none.
void refuse_locks(int error);

/// No call is counted any more. The fault is disarmed.
void leave_alone();

const std::vector<DiscStep>& inq_steps();
} // namespace FaultyDisc
