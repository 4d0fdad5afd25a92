#pragma once

#include "kivlib/hdr/AbortPanel.h"

/// Notices SIGINT and SIGTERM, so that the frame in hand is given up and nothing is left half done.
/// From then on nobody is waited for who doesn't read what is said; and a signal that comes two
/// seconds or more after the first one ends the process at once.
class StopSignal : public AbortPanel {
public:
    /// A signal that the caller has the process ignore stays ignored, and SIGPIPE is from now on:
    /// the run goes on if its words find no reader.
    static void watch();

    /// The signal that came; 0: none yet.
    static int inq_signal();

    bool inq_abort() override { return inq_signal() != 0; }
};
