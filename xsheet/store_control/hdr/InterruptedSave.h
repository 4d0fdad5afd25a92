#pragma once

#include "xsheet/store_control/hdr/CommitRecord.h"

#include <vector>

/// What a save that did not reach its end has left in a scene folder, judged by the record of its
/// commit and the sums of the files.
class InterruptedSave {
public:
    enum State {
        NONE,     // there is no record
        TORN,     // the record is not whole: the save never happened
        OUTDATED, // the record is of another time
        MOVED,    // every part is in its place
        PENDING,  // some parts are still to be moved from their names with "~"
        DAMAGED   // some are to be moved and others are neither here nor there, or can't be read
    };

    /// Looks, and changes nothing.
    explicit InterruptedSave(const KIVString& folder);

    State inq_state() const { return state; }

    /// The parts to be moved, and those that were found nowhere or can't be read.
    const std::vector<KIVString>& inq_pending() const { return pending; }
    const std::vector<KIVString>& inq_bad() const { return bad; }

    /// Ends or undoes the save, so that there is no record. False, and the folder still means the
    /// same, if it can't be changed or is damaged.
    bool finish();

private:
    void judge();
    bool judge(const CommitRecord::Part& part);
    bool remove_record() const;

    KIVString folder;
    State state;
    std::vector<KIVString> pending; // in the order of the record
    std::vector<KIVString> bad;
};
