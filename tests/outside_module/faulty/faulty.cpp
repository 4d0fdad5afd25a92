#include <cstdio>
#include <kivlib/hdr/DLLInitialiser.h>
#include <stdexcept>

// What may lie in a module folder and can't serve. MARK and SETUP say what this one has.

void not_there();

namespace {
[[maybe_unused]] const bool tells_that_it_runs = std::puts("Code of the module runs.") >= 0;
}

extern "C" {
#ifdef MARK
extern const char montaray_module_mark[];
const char montaray_module_mark[] = MONTARAY_MODULE_MARK MARK;
#endif
#ifdef SETUP
void montaray_module_setup(ClassManager*)
{
    SETUP;
}
#endif
}
