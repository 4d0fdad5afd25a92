#pragma once

#include "kivlib/hdr/KIVObject.h"

class KIVError;

/// Hears of the errors and the progress of an evaluation. Each reporter gets a copy of its own.
class GraphExecReporter : public KIVObject {
public:
    /// False stops the run.
    virtual bool signal_exception(gsl::owner<KIVError*> error) = 0;
    virtual void report_status(gsl::owner<KIVError*> status) = 0;
};

/// Writes both to the console, and lets the run go on.
class GraphExecStatusReporter : public GraphExecReporter {
public:
    bool signal_exception(gsl::owner<KIVError*> error) override;
    void report_status(gsl::owner<KIVError*> status) override;
};
