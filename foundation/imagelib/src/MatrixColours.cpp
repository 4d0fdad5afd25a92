#include "imagelib/src/MatrixColours.h"

#include "imagelib/src/ColourProfile.h"
#include "imagelib/src/samples.h"
#include "kivlib/hdr/Matrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {
constexpr int BLOCK = 16; // pixels that are worked out side by side
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

/// From levels to light, which only grows. False for a curve that doesn't.
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
    const auto is_number = [](float light) { return std::isfinite(light); };
    return std::ranges::all_of(curve, is_number) && std::ranges::is_sorted(curve);
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

namespace {
/// Among the levels. What is no number counts as dark.
float to_place(float light)
{
    return std::sqrt(light > 0.0F ? std::min(light, 1.0F) : 0.0F) * ROOTS;
}
} // namespace

float MatrixColours::to_level(int channel, float place) const
{
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
        to[c] = to_level(c, to_place(matrix[c][0] * light[0] + matrix[c][1] * light[1] +
                                     matrix[c][2] * light[2]));
}

/// Step by step for all of the block, which lets the compiler take several pixels at a time.
template <class Sample> void MatrixColours::transform_block(Sample* pixels) const
{
    float alpha[BLOCK];
    float light[3][BLOCK];
    for (int i = 0; i < BLOCK; ++i) {
        const Sample* const pixel = pixels + 4 * i;
        alpha[i] = pixel[3];
        const float scale = pixel[3] == 0 ? 0.0F : static_cast<float>(MOST) / alpha[i];
        for (int c = 0; c < 3; ++c) {
            // A glow has far more colour than alpha.
            const float level = std::min(static_cast<float>(pixel[c]) * scale, float{MOST});
            light[c][i] = lights[light_curves[c]][static_cast<std::size_t>(level + 0.5F)];
        }
    }
    for (int c = 0; c < 3; ++c) {
        const float* const factors = matrix[c];
        float place[BLOCK];
        for (int i = 0; i < BLOCK; ++i)
            place[i] = to_place(factors[0] * light[0][i] + factors[1] * light[1][i] +
                                factors[2] * light[2][i]);
        for (int i = 0; i < BLOCK; ++i)
            if (alpha[i] != 0.0F)
                pixels[4 * i + c] = static_cast<Sample>(to_level(c, place[i]) * alpha[i] + 0.5F);
    }
}

/// Drawings have long runs of one colour, and between them nothing.
template <class Sample> void MatrixColours::transform_row(Sample* row, int pixels) const
{
    constexpr std::size_t BYTES = 4 * sizeof(Sample);
    Sample before[4] = {};
    Sample after[4] = {};
    for (; pixels >= BLOCK; pixels -= BLOCK, row += 4 * BLOCK) {
        const bool is_flat = std::memcmp(row, row + 4, (BLOCK - 1) * BYTES) == 0;
        if (is_flat && std::memcmp(row, before, BYTES) == 0) {
            if (std::memcmp(before, after, BYTES) != 0)
                for (int i = 0; i < BLOCK; ++i)
                    std::memcpy(row + 4 * i, after, BYTES);
            continue;
        }
        if (is_flat)
            std::memcpy(before, row, BYTES);
        transform_block(row);
        if (is_flat)
            std::memcpy(after, row, BYTES);
    }
    Sample rest[4 * BLOCK] = {};
    std::memcpy(rest, row, static_cast<std::size_t>(pixels) * BYTES);
    transform_block(rest);
    std::memcpy(row, rest, static_cast<std::size_t>(pixels) * BYTES);
}

template void MatrixColours::transform_row(std::uint8_t* row, int pixels) const;
template void MatrixColours::transform_row(std::uint16_t* row, int pixels) const;
