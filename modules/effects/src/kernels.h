#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of the blur, for the processor at hand. All give the same bits. Counts are of
// samples, four to a pixel, unless they say otherwise.
struct BlurKernels {
    /// Adds the samples of a row to `sums`.
    void (*add_8)(float* sums, const std::uint8_t* samples, std::size_t count);
    void (*add_16)(float* sums, const std::uint16_t* samples, std::size_t count);

    /// The sum of each `factor` neighbouring pixels.
    void (*gather)(float* out, const float* in, int factor, std::size_t out_pixels);

    /// rows[0] * weights[0] + (rows[1] + rows[2]) * weights[1] + ... for `pairs` pairs of rows. It
    /// goes on to the next multiple of BLUR_STEP, so the rows need room for that.
    void (*weigh)(float* out, const float* const* rows, const float* weights, int pairs,
                  std::size_t count);

    /// `share` of the way from `a` to `b`. It goes on like `weigh`.
    void (*mix)(float* out, const float* a, const float* b, float share, std::size_t count);

    /// Goes from each pixel to the next in `factor` steps, at the shares that lie half a step from
    /// the pixels. The first output pixel is step `step` from in[0].
    void (*spread)(float* out, const float* in, int factor, int step, std::size_t out_pixels);

    void (*round_8)(std::uint8_t* out, const float* in, std::size_t count);
    void (*round_16)(std::uint16_t* out, const float* in, std::size_t count);
};

constexpr std::size_t BLUR_STEP = 32;

const BlurKernels& inq_blur_kernels();
