#pragma once

#include <memory>

class KIVPixmap;

/// A copy of a pixmap with alpha at half its width, its height or both, each pixel the mean of the
/// area that it stands for; odd sizes are rounded down, and nothing goes below 1. Null without
/// memory.
std::unique_ptr<KIVPixmap> make_reduced(const KIVPixmap& source, bool halve_width,
                                        bool halve_height);
