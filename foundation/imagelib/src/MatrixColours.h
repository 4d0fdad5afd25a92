#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class ColourProfile;

/// The way of pixels between two profiles that are curves and a matrix each, as those of screens
/// are. It is worked out in floating point, so that nothing is rounded on the way.
class MatrixColours {
public:
    /// Null where a profile is of another kind.
    static std::unique_ptr<MatrixColours> make(const ColourProfile& from, const ColourProfile& to);

    /// Red, green and blue, from 16 bits each to 0 to 1.
    void transform(const int* from, float* to) const;

    /// A row of premultiplied pixels with alpha, in place.
    template <class Sample> void transform_row(Sample* row, int pixels) const;

private:
    using Curve = std::vector<float>;

    MatrixColours() = default;
    float to_level(int channel, float place) const;
    template <class Sample> void transform_block(Sample* pixels) const;

    Curve lights[3];     // by the 16 bits of a level
    float matrix[3][3];  // from light to light
    Curve levels[3];     // by the root of the light, and the last one twice
    int light_curves[3]; // which of them a channel has: equal ones are there once
};
