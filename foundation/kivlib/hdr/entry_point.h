#pragma once

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

#include <exception>

/// Runs `operation` for an entry point of the library, from which no exception may come: one from
/// below (memory ran out) is reported, and `on_failure` is the result.
template <class Result, class Operation>
Result without_exceptions(Result on_failure, Operation operation,
                          const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    try {
        return operation();
    } catch (const std::exception& exception) {
        report_error(file, line) << exception.what() << "\n";
        return on_failure;
    }
}
