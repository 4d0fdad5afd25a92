#include "kivlib/hdr/KIVConsole.h"

#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/KIVError.h"

#include <memory>

KIVConsole* KIVConsole::inq_console()
{
    static KIVConsole console;
    return &console;
}

void KIVConsole::report(gsl::owner<KIVError*> given)
{
    const std::unique_ptr<KIVError> error(given);
    *cerrp << error->inq_description() << "\n";
}
