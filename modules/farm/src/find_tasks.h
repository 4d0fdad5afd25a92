#pragma once

#include "batchapi/hdr/BatchEngine.h"

#include <map>
#include <string>

class BatchManager;

/// The chunks of a job that the service has tasks of the user for that may still run; an empty
/// user is the own one. None, with words, if it does not answer.
std::map<int, BatchState> find_tasks(BatchManager& manager, const std::string& job,
                                     const std::string& user, std::string& error);
