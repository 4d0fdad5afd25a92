#pragma once

/// By this, long work asks whether the user gave up, and says how far it is.
class AbortPanel {
public:
    virtual ~AbortPanel() = default;

    /// Once true, it stays so for the run.
    virtual bool inq_abort() = 0;

    /// From 0 to 1.
    virtual void set_progress(double) {}
};
