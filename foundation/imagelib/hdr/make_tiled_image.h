#pragma once

#include "kivlib/hdr/KIVString.h"

class AbortPanel;

/// Writes the picture of a file into a tiled file, together with its smaller copies. Rows of tiles
/// are all that is in memory, unless the file has its rows in another order. False, with a text for
/// the user, if it can't or `abort` says so; then no file comes or changes.
bool make_tiled_image(const KIVString& image, const KIVString& tiled_image, KIVString& error,
                      AbortPanel* abort = nullptr);
