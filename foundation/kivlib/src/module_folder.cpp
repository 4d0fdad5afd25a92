#include "kivlib/src/module_folder.h"

#include "kivlib/hdr/file_operations.h"

#include <dlfcn.h>

namespace {
/// Beside the library, wherever it is installed; empty if that can't be told.
KIVString find_module_folder()
{
    Dl_info library{};
    if (!dladdr(reinterpret_cast<const void*>(&load_module_of_class), &library))
        return {};
    KIVString folder = KIVString(library.dli_fname).get_path();
    if (folder.is_null())
        return {};
    folder = inq_absolute_path(folder);
    return folder.str().starts_with('/') ? folder.append_path("montaray").append_path("modules")
                                         : KIVString();
}

const KIVString& inq_module_folder()
{
    static const KIVString folder = find_module_folder();
    return folder;
}

// When the library is loaded: its place may be relative to the working directory of that moment,
// and a program that later works in a scene's folder must not find modules there.
const bool is_found_early = (inq_module_folder(), true);

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
    KIVString path = inq_module_folder();
    if (path.is_null() || !is_class_name(class_name))
        return false;
    path.append_path(class_name + ".so");
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL) != nullptr;
}
