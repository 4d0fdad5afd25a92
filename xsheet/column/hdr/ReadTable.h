#pragma once

/// What a kind of sub-column keeps beside its keys so that it can be read fast.
struct ReadTable {
    virtual ~ReadTable() = default;

    unsigned long made_at = 0; // the change count of the keys that it speaks of
};
