#include "imagelib/src/MatrixColours.h"

#include "imagelib/src/ColourProfile.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/Matrix.h"

namespace {
constexpr int MOST = samples::FULL<std::uint16_t>;

/// The curves back are looked up by the root of the light: that is near the eye's own scale, on
/// which they bend little.
constexpr int ROOTS = 4096;

constexpr cmsTagSignature CURVES[] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
constexpr cmsTagSignature COLOURS[] = {cmsSigRedColorantTag, cmsSigGreenColorantTag,
                                       cmsSigBlueColorantTag};

/// Columns are the colours.
bool read_matrix(const ColourProfile& profile, Matrix44& matrix)
{
    for (int c = 0; c < 3; ++c) {
        const auto* colour =
            static_cast<const cmsCIEXYZ*>(cmsReadTag(profile.inq_handle(), COLOURS[c]));
        if (!colour)
            return false;
        matrix(0, c) = colour->X;
        matrix(1, c) = colour->Y;
        matrix(2, c) = colour->Z;
    }
    return true;
}

/// From levels to light.
bool read_curve(const ColourProfile& profile, int channel, std::vector<float>& curve)
{
    const auto* told =
        static_cast<const cmsToneCurve*>(cmsReadTag(profile.inq_handle(), CURVES[channel]));
    if (!told)
        return false;
    curve.resize(MOST + 1);
    for (int i = 0; i <= MOST; ++i)
        curve[static_cast<std::size_t>(i)] =
            cmsEvalToneCurveFloat(told, static_cast<float>(i) / MOST);
    return std::ranges::is_sorted(curve);
}

/// From the root of the light to levels.
std::vector<float> turn_curve(const std::vector<float>& curve)
{
    std::vector<float> turned(ROOTS + 2);
    std::size_t below = 0;
    for (std::size_t i = 0; i <= ROOTS; ++i) {
        const double root = static_cast<double>(i) / ROOTS;
        const double light = root * root;
        while (below + 2 < curve.size() && static_cast<double>(curve[below + 1]) < light)
            ++below;
        const double first = static_cast<double>(curve[below]);
        const double step = static_cast<double>(curve[below + 1]) - first;
        const double part = step > 0.0 ? std::clamp((light - first) / step, 0.0, 1.0) : 0.0;
        turned[i] = static_cast<float>((static_cast<double>(below) + part) / MOST);
    }
    turned[ROOTS + 1] = turned[ROOTS];
    return turned;
}
} // namespace

std::unique_ptr<MatrixColours> MatrixColours::make(const ColourProfile& from,
                                                   const ColourProfile& to)
{
    Matrix44 from_matrix;
    Matrix44 to_matrix;
    if (!read_matrix(from, from_matrix) || !read_matrix(to, to_matrix) || !to_matrix.invert())
        return nullptr;
    const Matrix44 whole = to_matrix * from_matrix;
    std::unique_ptr<MatrixColours> made(new MatrixColours);
    std::vector<float> curve;
    for (int c = 0; c < 3; ++c) {
        if (!read_curve(to, c, curve) || !read_curve(from, c, made->lights[c]))
            return nullptr;
        made->levels[c] = turn_curve(curve);
        const bool is_as_first = c > 0 && made->lights[c] == made->lights[0];
        made->light_curves[c] = is_as_first ? 0 : c;
        if (is_as_first)
            made->lights[c] = {};
        for (int k = 0; k < 3; ++k)
            made->matrix[c][k] = static_cast<float>(whole(c, k));
    }
    return made;
}

float MatrixColours::to_level(int channel, float light) const
{
    const float place = std::sqrt(std::clamp(light, 0.0F, 1.0F)) * ROOTS;
    const int before = static_cast<int>(place);
    const float* const level = levels[channel].data() + before;
    return level[0] + (place - static_cast<float>(before)) * (level[1] - level[0]);
}

void MatrixColours::transform(const int* from, float* to) const
{
    float light[3];
    for (int c = 0; c < 3; ++c)
        light[c] = lights[light_curves[c]][static_cast<std::size_t>(from[c])];
    for (int c = 0; c < 3; ++c)
        to[c] = to_level(c, matrix[c][0] * light[0] + matrix[c][1] * light[1] +
                                matrix[c][2] * light[2]);
}

template <class Sample> void MatrixColours::transform_pixel(Sample* pixel) const
{
    const unsigned alpha = pixel[3];
    if (alpha == 0)
        return;
    int from[3];
    for (int c = 0; c < 3; ++c)
        from[c] = samples::to_straight(pixel[c], alpha);
    float to[3];
    transform(from, to);
    for (int c = 0; c < 3; ++c)
        pixel[c] = static_cast<Sample>(to[c] * static_cast<float>(alpha) + 0.5F);
}

/// Drawings have long runs of one colour.
template <class Sample> void MatrixColours::transform_row(Sample* row, int pixels) const
{
    constexpr std::size_t BYTES = 4 * sizeof(Sample);
    Sample before[4] = {};
    Sample after[4] = {};
    for (int x = 0; x < pixels; ++x, row += 4) {
        if (std::memcmp(row, before, BYTES) != 0) {
            std::memcpy(before, row, BYTES);
            std::memcpy(after, row, BYTES);
            transform_pixel(after);
        }
        std::memcpy(row, after, BYTES);
    }
}

template void MatrixColours::transform_row(std::uint8_t* row, int pixels) const;
template void MatrixColours::transform_row(std::uint16_t* row, int pixels) const;
