#pragma once

#include "kivlib/hdr/KIVString.h"

/// The one folder that modules are loaded from: `montaray/modules` beside the library. A class's
/// module lies there under the name of the class, and nothing that a file names leads out of it.
/// A module that was loaded stays in the process.
class ModuleFolder {
public:
    /// Absolute; empty if the place of the library can't be told.
    static const KIVString& inq_path();

    /// Loads the module of a class. True if the class has its code afterwards. `fault` tells why a
    /// module that is there could not serve; it is empty if there is none.
    static bool load_class(const KIVString& class_name, KIVString& fault);

    /// Loads all modules, for a palette or a search by users' names. Faults are reported.
    static void load_all();
};
