#pragma once

#include "batchapi/hdr/SlurmEngine.h"

/// What is wrong with the service's configuration; empty if there is one. Without one each command
/// would look for it for a minute.
KIVString find_configuration_fault(const SlurmEngine::Settings& settings);
