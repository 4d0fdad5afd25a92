#include "compositor/lib/hdr/DAGExecReporter.h"

#include "kivlib/hdr/KIVError.h"

#include <memory>

bool DAGExecTypeCheckerReporter::signal_exception(gsl::owner<KIVError*> given)
{
    const std::unique_ptr<KIVError> taken(given);
    error = taken->inq_family();
    return false;
}
