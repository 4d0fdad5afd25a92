#pragma once

#include "kivlib/hdr/Owned.h"

class KIVError;

/// The console that status reporters write to.
class KIVConsole {
public:
    static KIVConsole* inq_console();

    /// Writes the description as a line of the error console and deletes the error.
    void report(gsl::owner<KIVError*> error);
};
