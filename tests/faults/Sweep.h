#pragma once

#include "tests/faults/FaultyDisc.h"
#include "tests/faults/Tally.h"

#include <cerrno>

enum class SweepSize { FEW_ERRORS, ALL_ERRORS };

inline SweepSize few_or_all_errors()
{
    return all_faults() ? SweepSize::ALL_ERRORS : SweepSize::FEW_ERRORS;
}

/// Errors that a call of the kind may really give, the likeliest first.
inline std::vector<int> errors_of(DiscCall call, SweepSize size)
{
    static const std::map<DiscCall, std::vector<int>> ERRORS = {
        {DiscCall::OPEN, {EACCES, EIO, ENOSPC, EDQUOT, EMFILE, EROFS}},
        {DiscCall::READ, {EIO}},
        {DiscCall::WRITE, {ENOSPC, EIO, EDQUOT}},
        {DiscCall::SYNC, {EIO, ENOSPC, EDQUOT}},
        {DiscCall::CLOSE, {EIO, ENOSPC, EDQUOT}},
        {DiscCall::RENAME, {EIO, EACCES, ENOSPC, EROFS}},
        {DiscCall::UNLINK, {EIO, EACCES, EROFS}},
        {DiscCall::MAKE, {ENOSPC, EACCES, EDQUOT}},
        {DiscCall::TRUNCATE, {EIO}},
        {DiscCall::LOCK, {ENOLCK, EWOULDBLOCK}},
        {DiscCall::INSPECT, {EIO, EACCES}},
    };
    std::vector<int> errors = ERRORS.at(call);
    if (size == SweepSize::FEW_ERRORS)
        errors.resize(1);
    return errors;
}

inline bool changes_disc(DiscCall call)
{
    return call != DiscCall::READ && call != DiscCall::INSPECT && call != DiscCall::LOCK;
}

/// Tries the fault on the first call of its kind, the second, and so on until `fires` says that
/// there was no such call any more.
template <class Case> void sweep(Fault fault, Case fires)
{
    for (fault.nth = 1; fires(fault); ++fault.nth) {
    }
}

/// Every kind of call, refused, cut short, or the last one that the process makes.
template <class Case> void sweep_all(SweepSize size, Case fires)
{
    for (const DiscCall call : DISC_CALLS) {
        for (const int error : errors_of(call, size))
            for (const Fault::Manner manner :
                 {Fault::REFUSE, Fault::REFUSE_FROM_NOW, Fault::DISC_DIES})
                sweep({call, 0, manner, error}, fires);
        if (!changes_disc(call))
            continue;
        sweep({call, 0, Fault::KILL_BEFORE}, fires);
        sweep({call, 0, Fault::KILL_AFTER}, fires);
    }
    sweep({DiscCall::WRITE, 0, Fault::WRITE_HALF}, fires);
    for (const int error : errors_of(DiscCall::WRITE, size))
        sweep({DiscCall::WRITE, 0, Fault::WRITE_HALF_THEN_REFUSE, error}, fires);
}
