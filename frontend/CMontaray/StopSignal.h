#pragma once

#include "kivlib/hdr/AbortPanel.h"

/// Notices SIGINT and SIGTERM, so that the frame in hand is given up and nothing is left half done.
class StopSignal : public AbortPanel {
public:
    static void watch();

    /// The signal that came; 0: none yet.
    static int inq_signal();

    bool inq_abort() override { return inq_signal() != 0; }
};
