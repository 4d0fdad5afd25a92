#pragma once

class KIVPixmap;

/// How an image is drawn.
struct DrawOptions {
    bool filtered;
    double opacity = 1.0;
};

/// A point in pixels; y runs downwards.
struct Place {
    double x;
    double y;
};

// Without memory these throw, as `new` does.

/// Draws `source` over `target` so that three of its corners come to the places. False if its
/// shape there has no area.
bool composite_placed(KIVPixmap& target, const KIVPixmap& source, Place top_left, Place top_right,
                      Place bottom_left, const DrawOptions& options);

/// Draws `source` with its top left pixel at (x, y).
void composite_unscaled(KIVPixmap& target, const KIVPixmap& source, long x, long y,
                        const DrawOptions& options);

/// Fills the transparent `target` with what lies between four corners of the source: top left, top
/// right, bottom right and bottom left in pixels.
bool resample_quadrilateral(KIVPixmap& target, const KIVPixmap& source, const Place corners[4]);
