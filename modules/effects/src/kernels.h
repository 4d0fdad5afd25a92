#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops of the blur, for the processor at hand. All give the same bits. Counts are of
// samples, four to a pixel, unless they say otherwise.
struct BlurKernels {
    /// Adds the samples of a row to `sums`.
    void (*add_8)(float* sums, const std::uint8_t* samples, std::size_t count);
    void (*add_16)(float* sums, const std::uint16_t* samples, std::size_t count);

    /// Shares each pixel out between the places before and behind it, by how near it lies to each.
    /// `in` begins with the `factor` pixels that lie before the first place of `out`.
    void (*gather)(float* out, const float* in, int factor, std::size_t out_places);

    /// Adds `share` of the row to `behind`, and the rest of it to `before`. It goes on to the next
    /// multiple of BLUR_STEP, so the rows need room for that.
    void (*divide)(float* before, float* behind, const float* row, float share, std::size_t count);

    /// rows[0] * weights[0] + (rows[1] + rows[2]) * weights[1] + ... for `pairs` pairs of rows. It
    /// goes on like `divide`.
    void (*weigh)(float* out, const float* const* rows, const float* weights, int pairs,
                  std::size_t count);

    /// The sum of three rows in their shares. It goes on like `divide`.
    void (*mix)(float* out, const float* const rows[3], const float shares[3], std::size_t count);

    /// `factor` steps for each place, in the shares of the place before, itself and the one behind:
    /// three for each step. The first output pixel is step `step` of the place at in[1].
    void (*spread)(float* out, const float* in, const float* shares, int factor, int step,
                   std::size_t out_pixels);

    void (*round_8)(std::uint8_t* out, const float* in, std::size_t count);
    void (*round_16)(std::uint16_t* out, const float* in, std::size_t count);
};

constexpr std::size_t BLUR_STEP = 32;

const BlurKernels& inq_blur_kernels();
