#pragma once

#include "kivlib/hdr/IntVector2.h"

#include <vector>

class AbortPanel;
class KIVPixmap;

/// A Gaussian along one side. A wide one works on a coarser grid, of which each place is the mean
/// of a power of two of pixels, and goes straight from place to place: what the mean and the way
/// soften is left out of the Gaussian between them. So the work does not grow with the width.
class BlurAxis {
public:
    /// Changes nothing.
    BlurAxis() = default;

    /// `deviation`: the standard deviation in pixels; beyond MOST_DEVIATION it is that.
    explicit BlurAxis(double deviation);

    static constexpr double MOST_DEVIATION = 500.0;

    bool is_sharp() const { return weights.size() == 1; }

    /// Pixels that are looked at on either side of one.
    int inq_border() const;

    /// Pixels to a place of the grid.
    int inq_factor() const { return 1 << shift; }

    /// Places on either side that weigh in, and their weights from the middle outwards, which with
    /// both sides counted sum to 1.
    int inq_reach() const { return static_cast<int>(weights.size()) - 1; }
    const std::vector<float>& inq_weights() const { return weights; }

    /// The last place whose middle does not lie behind that of the pixel, and how many halves of a
    /// step the pixel lies behind it, in steps of `inq_factor()` to the next place.
    int find_place(int pixel) const { return inq_halves(pixel) >> (shift + 1); }
    int find_step(int pixel) const { return (inq_halves(pixel) >> 1) & (inq_factor() - 1); }

private:
    /// From the middle of place 0, in halves of a pixel.
    int inq_halves(int pixel) const { return 2 * pixel + 1 - inq_factor(); }

    int shift = 0;
    std::vector<float> weights = {1.0F};
};

/// Both pixmaps are of one type, with alpha. `place` is where the top left pixel of `target` lies
/// in `source`, in rows from the top; outside of `source` all is transparent. An abort leaves the
/// rest of `target` as it was.
void blur_gaussian(KIVPixmap& target, const KIVPixmap& source, const IntVector2& place,
                   const BlurAxis& across, const BlurAxis& down, AbortPanel* abort);
