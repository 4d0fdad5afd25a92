#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// The inner loops of compositing, once in plain C++ and once for AVX2. Both give the same bits.
// Pixels have four premultiplied samples, alpha last.

/// Pixels to sample from.
struct SourcePixels {
    const unsigned char* data;
    int row_bytes;
    int width;
    int height;
};

/// A straight walk over the source: its first place, and the step to the next, in 1 / 2^32 of a
/// pixel. Whole numbers are the centres of pixels for filtered sampling, else their edges.
struct SourceWalk {
    std::int64_t u;
    std::int64_t v;
    std::int64_t du;
    std::int64_t dv;
};

/// The places of a level row's pixels in the source: from which column, and how far to the next.
struct Columns {
    const int* columns;
    const std::uint32_t* fractions;
};

/// A sample halfway through its filter.
template <class Sample> using Mixed = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, float>;

/// A share of a sample: of 8 bits in 1 / 2^15, and short of the whole.
template <class Sample> using Weight = std::conditional_t<sizeof(Sample) == 1, std::int16_t, float>;

constexpr int TAPS = 4;

/// Up to four neighbouring rows or columns that one of the output is made of.
template <class Sample> struct Taps {
    int first;
    Weight<Sample> shares[TAPS];

    Taps(int first, const float (&wanted)[TAPS]);
};

/// The bits that any of some pixels have, and those that all have: of two pixels of 8 bits a
/// sample, of which either may have them, or of one of 16.
struct CommonBits {
    std::uint64_t any = 0;
    std::uint64_t all = ~std::uint64_t{0};

    bool operator==(const CommonBits&) const = default;
};

template <class Sample> struct Kernels {
    /// All places of the walk lie inside the source.
    void (*sample_nearest)(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels);

    /// All places lie between the centres of the source's outermost pixels, so that each has four
    /// neighbours.
    void (*sample_bilinear)(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels);

    /// Filtered sampling of a row that lies level in the source, in two steps: two rows of the
    /// source at `down` of the way between them, false if all of it is transparent, and then of
    /// that the pixels at the columns and to the right of them.
    bool (*mix_rows)(Mixed<Sample>* out, const Sample* upper, const Sample* lower,
                     std::uint32_t down, int pixels);
    void (*mix_columns)(Sample* out, const Mixed<Sample>* mixed, const Columns& columns,
                        int pixels);

    /// The pixels of a row at the columns.
    void (*pick)(Sample* out, const Sample* row, const Columns& columns, int pixels);

    void (*over)(Sample* target, const Sample* source, int pixels);

    /// The rounded mean of four rows of pixels.
    void (*average)(Sample* out, const Sample* const rows[4], int pixels);

    /// Halves two rows of pixels both ways, each output the mean of 2 by 2.
    void (*halve)(Sample* out, const Sample* upper, const Sample* lower, int out_pixels);

    /// Rows of pixels in their shares, false if nothing is there. The first `row_count` rows have
    /// one.
    bool (*weigh_rows)(Mixed<Sample>* out, const Sample* const rows[TAPS],
                       const Weight<Sample> shares[TAPS], int row_count, int pixels);

    /// Each pixel from the columns of its taps, which all are there, with or without a share.
    void (*weigh_columns)(Sample* out, const Mixed<Sample>* mixed, const Taps<Sample>* taps,
                          int pixels);

    /// Of a whole block of pixels.
    CommonBits (*look_at_block)(const unsigned char* from, std::size_t row_bytes);
};

template <class Sample> const Kernels<Sample>& inq_plain_kernels();

/// Null if the processor hasn't got the instructions.
template <class Sample> const Kernels<Sample>* inq_avx2_kernels();

/// The fastest that the processor can run.
template <class Sample> const Kernels<Sample>& inq_kernels();

template <> const Kernels<std::uint8_t>& inq_plain_kernels();
template <> const Kernels<std::uint16_t>& inq_plain_kernels();
template <> const Kernels<std::uint8_t>* inq_avx2_kernels();
template <> const Kernels<std::uint16_t>* inq_avx2_kernels();
template <> const Kernels<std::uint8_t>& inq_kernels();
template <> const Kernels<std::uint16_t>& inq_kernels();

// The loops without vectors: what a vector loop does with the pixels that are left over.
namespace plain {

constexpr int ONE_SHIFT = 32; // of a walk's places

/// The weights of four neighbours of 16 bits; they sum up to the whole.
constexpr int NEIGHBOUR_BITS = 14;

/// The filtered sample between four pixels, at `u` and `v` of the way to the right and downwards
/// in 1 / 2^32.
template <class Sample>
void blend_four(Sample* out, const Sample* const pixels[4], std::uint32_t u, std::uint32_t v);

template <class Sample> const Sample* pixel_at(const SourcePixels& source, int x, int y)
{
    return reinterpret_cast<const Sample*>(source.data +
                                           static_cast<std::ptrdiff_t>(y) * source.row_bytes) +
           static_cast<std::ptrdiff_t>(x) * 4;
}

template <class Sample>
void sample_nearest(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels);
template <class Sample>
void sample_bilinear(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels);
template <class Sample>
bool mix_rows(Mixed<Sample>* out, const Sample* upper, const Sample* lower, std::uint32_t down,
              int pixels);
template <class Sample>
void mix_columns(Sample* out, const Mixed<Sample>* mixed, const Columns& columns, int pixels);
template <class Sample>
void pick(Sample* out, const Sample* row, const Columns& columns, int pixels);
template <class Sample> void over(Sample* target, const Sample* source, int pixels);
template <class Sample> void average(Sample* out, const Sample* const rows[4], int pixels);
template <class Sample>
void halve(Sample* out, const Sample* upper, const Sample* lower, int out_pixels);
template <class Sample>
bool weigh_rows(Mixed<Sample>* out, const Sample* const rows[TAPS],
                const Weight<Sample> shares[TAPS], int row_count, int pixels);
template <class Sample>
void weigh_columns(Sample* out, const Mixed<Sample>* mixed, const Taps<Sample>* taps, int pixels);
template <class Sample> CommonBits look_at_block(const unsigned char* from, std::size_t row_bytes);

} // namespace plain
