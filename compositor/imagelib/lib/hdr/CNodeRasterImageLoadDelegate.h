#pragma once

#include "kivlib/hdr/Owned.h"

class KIVStringSet;
class XSheet;

/// What a user interface does when artwork is brought in. It outlives its registration with
/// CNodeImageDLLInitialiser.
class CNodeRasterImageLoadDelegate {
public:
    /// Lets the user pick image files; null if there are none. The caller deletes the set. `mode`
    /// is always 1.
    virtual gsl::owner<KIVStringSet*> pick_files(const KIVStringSet& extensions, int mode) = 0;

    /// Lets the user extend the sheet: `n_files` have numbers beyond its end, `highest_frame` is
    /// the greatest of them.
    virtual void extend_sheet(XSheet* sheet, int highest_frame, int n_files) = 0;

protected:
    ~CNodeRasterImageLoadDelegate() = default;
};
