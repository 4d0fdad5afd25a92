#pragma once

#include "kivlib/hdr/KIVString.h"

/// The settings of the process. They come from the program that sets them; nothing is read.
class KIVDefaults {
public:
    /// The setting, or `fallback` if there is none.
    static bool inq_default(const KIVString& key, bool fallback);
    static int inq_default(const KIVString& key, int fallback);

    static void set_default(const KIVString& key, int value);
    static void clear_default(const KIVString& key);
};
