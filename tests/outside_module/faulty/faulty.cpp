#include <cstdio>
#include <kivlib/hdr/ClassDescriptor.h>
#include <kivlib/hdr/DLLInitialiser.h>
#include <stdexcept>

// What may lie in a module folder and can't serve. MARK and SETUP say what this one has.

void not_there();

namespace {
[[maybe_unused]] void enter_untyped(ClassManager* manager)
{
    const auto read = [](KIVIStream&) -> KIVObject* { return nullptr; };
    new ClassDescriptor("CNodeUntyped", "CNode", read, -1, manager);
}

[[maybe_unused]] const bool tells_that_it_runs = std::puts("Code of the module runs.") >= 0;
} // namespace

extern "C" {
#ifdef MARK
extern const char montaray_module_mark[];
const char montaray_module_mark[] = MONTARAY_MODULE_MARK MARK;
#endif
#ifdef SETUP
void montaray_module_setup([[maybe_unused]] ClassManager* manager)
{
    SETUP;
}
#endif
}
