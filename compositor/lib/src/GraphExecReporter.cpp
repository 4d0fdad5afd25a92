#include "compositor/lib/hdr/GraphExecReporter.h"

#include "kivlib/hdr/KIVConsole.h"

bool GraphExecStatusReporter::signal_exception(gsl::owner<KIVError*> error)
{
    KIVConsole::inq_console()->report(error);
    return true;
}

void GraphExecStatusReporter::report_status(gsl::owner<KIVError*> status)
{
    KIVConsole::inq_console()->report(status);
}
