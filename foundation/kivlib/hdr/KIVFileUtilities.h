#pragma once

#include "kivlib/hdr/KIVString.h"

class KIVFileUtilities {
public:
    /// The path of a side file of the given kind: in a folder under the kind's name, beside a file
    /// with the kind as a further extension.
    static KIVString local_get_subfile(const KIVString& file, const KIVString& kind);
};
