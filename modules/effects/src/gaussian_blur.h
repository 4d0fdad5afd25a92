#pragma once

#include "kivlib/hdr/IntVector2.h"

#include <vector>

class AbortPanel;
class KIVPixmap;

/// A Gaussian along one side. A wide one works on a coarser grid, of which each place stands for a
/// power of two of pixels: pixels are shared out between the places at both sides of them, and a
/// smooth curve leads from place to place. What both soften is left out of the Gaussian between
/// them. So the work does not grow with the width.
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

    /// The place that stands for the pixel, and which of its pixels that is.
    int find_place(int pixel) const { return pixel >> shift; }
    int find_step(int pixel) const { return pixel & (inq_factor() - 1); }

    /// Of the first of `inq_factor()` pixels between the middles of the place and of the next one.
    int find_first_behind(int place) const { return place * inq_factor() + inq_factor() / 2; }

    /// How far pixel `step` of those lies on the way, from 0 to 1.
    float inq_share_behind(int step) const
    {
        return (static_cast<float>(step) + 0.5F) / static_cast<float>(inq_factor());
    }

    /// Of each pixel of a place the shares of the place before, itself and the next one.
    const std::vector<float>& inq_curve() const { return curve; }

private:
    int shift = 0;
    std::vector<float> weights = {1.0F};
    std::vector<float> curve; // empty where places are pixels
};

/// Both pixmaps are of one type, with alpha. `place` is where the top left pixel of `target` lies
/// in `source`, in rows from the top; outside of `source` all is transparent. An abort leaves the
/// rest of `target` as it was.
void blur_gaussian(KIVPixmap& target, const KIVPixmap& source, const IntVector2& place,
                   const BlurAxis& across, const BlurAxis& down, AbortPanel* abort);
