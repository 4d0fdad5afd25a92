#pragma once

#include "kivlib/hdr/KIVObject.h"

class KIVError;

/// Hears of the errors of a pass.
class DAGExecReporter : public KIVObject {
public:
    /// True lets the pass go on.
    virtual bool signal_exception(gsl::owner<KIVError*> error) = 0;
};

/// Keeps the number of the last error of a type check, and lets the check fail.
class DAGExecTypeCheckerReporter : public DAGExecReporter {
public:
    bool signal_exception(gsl::owner<KIVError*> error) override;

    int inq_error() const { return error; }
    void clear() { error = 0; }

private:
    int error = 0;
};
