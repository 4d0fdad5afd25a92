#include "kivlib/src/module_folder.h"

#include "kivlib/hdr/KIVString.h"

#include <dlfcn.h>

namespace {
/// Beside the library, wherever it is installed.
KIVString inq_module_folder()
{
    Dl_info library{};
    if (!dladdr(reinterpret_cast<const void*>(&load_module_of_class), &library))
        return {};
    KIVString folder = KIVString(library.dli_fname).get_path();
    return folder.append_path("montaray").append_path("modules");
}

/// A name from a file never leads out of the module folder.
bool is_class_name(const KIVString& name)
{
    return !name.is_null() && std::ranges::all_of(name.str(), [](unsigned char c) {
        return std::isalnum(c) || c == '_';
    });
}
} // namespace

bool load_module_of_class(const KIVString& class_name)
{
    if (!is_class_name(class_name))
        return false;
    KIVString path = inq_module_folder();
    path.append_path(class_name + ".so");
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr;
}
