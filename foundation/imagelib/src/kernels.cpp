#include "imagelib/src/kernels.h"

#include "imagelib/src/Tile.h"
#include "imagelib/src/samples.h"

// A sample of 8 bits has 6 bits more while it is worked on, and weights of 15 bits; one of 16 bits
// is a float then, and a weight has the 23 bits that a float holds.
namespace {
constexpr int WEIGHT_BITS = 15;
constexpr int EXTRA_BITS = 6;
constexpr int FLOAT_BITS = 23;

/// What the processor's rounding multiplication of high halves gives.
int multiply_rounded(int a, int weight)
{
    return (a * weight + (1 << (WEIGHT_BITS - 1))) >> WEIGHT_BITS;
}

int whole(std::int64_t place)
{
    return static_cast<int>(place >> plain::ONE_SHIFT);
}

std::uint16_t begin_mix(std::uint8_t sample)
{
    return static_cast<std::uint16_t>(sample << EXTRA_BITS);
}

float begin_mix(std::uint16_t sample)
{
    return sample;
}

std::uint16_t mix(std::uint16_t a, std::uint16_t b, std::uint32_t share)
{
    const int weight = static_cast<int>(share >> (plain::ONE_SHIFT - WEIGHT_BITS));
    return static_cast<std::uint16_t>(a + multiply_rounded(b - a, weight));
}

float mix(float a, float b, std::uint32_t share)
{
    constexpr float UNIT = 1.0F / (1 << FLOAT_BITS);
    return a + (b - a) * (static_cast<float>(share >> (plain::ONE_SHIFT - FLOAT_BITS)) * UNIT);
}

std::uint16_t weigh(std::uint16_t value, std::int16_t share)
{
    return static_cast<std::uint16_t>(multiply_rounded(value, share));
}

float weigh(float value, float share)
{
    return value * share;
}

void set_weight(std::int16_t& weight, float share)
{
    constexpr float WHOLE = 1 << WEIGHT_BITS;
    weight =
        static_cast<std::int16_t>(std::min(std::lrintf(share * WHOLE), (1L << WEIGHT_BITS) - 1));
}

void set_weight(float& weight, float share)
{
    weight = share;
}

void end_mix(std::uint8_t& out, std::uint16_t value)
{
    out = static_cast<std::uint8_t>((value + (1 << (EXTRA_BITS - 1))) >> EXTRA_BITS);
}

void end_mix(std::uint16_t& out, float value)
{
    out = static_cast<std::uint16_t>(std::lrintf(value));
}
} // namespace

template <class Sample> Taps<Sample>::Taps(int first, const float (&wanted)[TAPS]) : first(first)
{
    for (int i = 0; i < TAPS; ++i)
        set_weight(shares[i], wanted[i]);
}

template struct Taps<std::uint8_t>;
template struct Taps<std::uint16_t>;

namespace plain {

template <>
void blend_four(std::uint8_t* out, const std::uint8_t* const pixels[4], std::uint32_t u,
                std::uint32_t v)
{
    for (int c = 0; c < 4; ++c) {
        const auto left = mix(begin_mix(pixels[0][c]), begin_mix(pixels[2][c]), v);
        const auto right = mix(begin_mix(pixels[1][c]), begin_mix(pixels[3][c]), v);
        end_mix(out[c], mix(left, right, u));
    }
}

template <>
void blend_four(std::uint16_t* out, const std::uint16_t* const pixels[4], std::uint32_t u,
                std::uint32_t v)
{
    constexpr unsigned WHOLE = 1U << NEIGHBOUR_BITS;
    const unsigned right = u >> (ONE_SHIFT - NEIGHBOUR_BITS);
    const unsigned lower = v >> (ONE_SHIFT - NEIGHBOUR_BITS);
    const unsigned both = (right * lower + WHOLE / 2) >> NEIGHBOUR_BITS;
    const unsigned weights[4] = {WHOLE - right - lower + both, right - both, lower - both, both};
    for (int c = 0; c < 4; ++c) {
        unsigned sum = WHOLE / 2;
        for (int i = 0; i < 4; ++i)
            sum += weights[i] * pixels[i][c];
        out[c] = static_cast<std::uint16_t>(sum >> NEIGHBOUR_BITS);
    }
}

template <class Sample>
bool mix_rows(Mixed<Sample>* out, const Sample* upper, const Sample* lower, std::uint32_t down,
              int pixels)
{
    unsigned all = 0;
    for (int i = 0; i < 4 * pixels; ++i) {
        out[i] = mix(begin_mix(upper[i]), begin_mix(lower[i]), down);
        all |= upper[i] | lower[i];
    }
    return all != 0;
}

template <class Sample>
void mix_columns(Sample* out, const Mixed<Sample>* mixed, const Columns& columns, int pixels)
{
    for (int i = 0; i < pixels; ++i, out += 4) {
        const Mixed<Sample>* left = mixed + std::ptrdiff_t{4} * columns.columns[i];
        for (int c = 0; c < 4; ++c)
            end_mix(out[c], mix(left[c], left[c + 4], columns.fractions[i]));
    }
}

template <class Sample>
void pick(Sample* out, const Sample* row, const Columns& columns, int pixels)
{
    for (int i = 0; i < pixels; ++i, out += 4)
        std::memcpy(out, row + std::ptrdiff_t{4} * columns.columns[i], 4 * sizeof(Sample));
}

template <class Sample>
void sample_nearest(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels)
{
    for (int i = 0; i < pixels; ++i, out += 4) {
        const Sample* pixel = pixel_at<Sample>(source, whole(walk.u), whole(walk.v));
        std::memcpy(out, pixel, 4 * sizeof(Sample));
        walk.u += walk.du;
        walk.v += walk.dv;
    }
}

template <class Sample>
void sample_bilinear(Sample* out, const SourcePixels& source, SourceWalk walk, int pixels)
{
    const std::ptrdiff_t down = source.row_bytes / static_cast<std::ptrdiff_t>(sizeof(Sample));
    for (int i = 0; i < pixels; ++i, out += 4) {
        const Sample* pixel = pixel_at<Sample>(source, whole(walk.u), whole(walk.v));
        const Sample* const four[4] = {pixel, pixel + 4, pixel + down, pixel + down + 4};
        blend_four(out, four, static_cast<std::uint32_t>(walk.u),
                   static_cast<std::uint32_t>(walk.v));
        walk.u += walk.du;
        walk.v += walk.dv;
    }
}

template <class Sample> void over(Sample* target, const Sample* source, int pixels)
{
    for (int i = 0; i < pixels; ++i)
        samples::put_over(target + std::ptrdiff_t{4} * i, source + std::ptrdiff_t{4} * i);
}

template <class Sample> void average(Sample* out, const Sample* const rows[4], int pixels)
{
    for (int i = 0; i < 4 * pixels; ++i) {
        const unsigned sum = rows[0][i] + 0U + rows[1][i] + rows[2][i] + rows[3][i];
        out[i] = static_cast<Sample>((sum + 2) >> 2);
    }
}

template <class Sample>
void halve(Sample* out, const Sample* upper, const Sample* lower, int out_pixels)
{
    for (int i = 0; i < out_pixels; ++i, out += 4, upper += 8, lower += 8)
        for (int c = 0; c < 4; ++c) {
            const unsigned sum = upper[c] + 0U + upper[c + 4] + lower[c] + lower[c + 4];
            out[c] = static_cast<Sample>((sum + 2) >> 2);
        }
}

template <class Sample>
bool weigh_rows(Mixed<Sample>* out, const Sample* const rows[TAPS],
                const Weight<Sample> shares[TAPS], int row_count, int pixels)
{
    bool has_any = false;
    for (int i = 0; i < 4 * pixels; ++i) {
        out[i] = 0;
        for (int k = 0; k < row_count; ++k)
            out[i] = static_cast<Mixed<Sample>>(out[i] + weigh(begin_mix(rows[k][i]), shares[k]));
        has_any |= out[i] != 0;
    }
    return has_any;
}

/// The first and the third column are added, and the others, and then both sums, as the vectors do.
template <class Sample>
void weigh_columns(Sample* out, const Mixed<Sample>* mixed, const Taps<Sample>* taps, int pixels)
{
    for (int i = 0; i < pixels; ++i, out += 4) {
        const Mixed<Sample>* left = mixed + std::ptrdiff_t{4} * taps[i].first;
        for (int c = 0; c < 4; ++c) {
            const auto part = [&](int k) { return weigh(left[4 * k + c], taps[i].shares[k]); };
            end_mix(out[c], static_cast<Mixed<Sample>>((part(0) + part(2)) + (part(1) + part(3))));
        }
    }
}

template bool mix_rows(std::uint16_t*, const std::uint8_t*, const std::uint8_t*, std::uint32_t,
                       int);
template bool mix_rows(float*, const std::uint16_t*, const std::uint16_t*, std::uint32_t, int);
template void mix_columns(std::uint8_t*, const std::uint16_t*, const Columns&, int);
template void mix_columns(std::uint16_t*, const float*, const Columns&, int);
template void pick(std::uint8_t*, const std::uint8_t*, const Columns&, int);
template void pick(std::uint16_t*, const std::uint16_t*, const Columns&, int);
template void sample_nearest(std::uint8_t*, const SourcePixels&, SourceWalk, int);
template void sample_nearest(std::uint16_t*, const SourcePixels&, SourceWalk, int);
template void sample_bilinear(std::uint8_t*, const SourcePixels&, SourceWalk, int);
template void sample_bilinear(std::uint16_t*, const SourcePixels&, SourceWalk, int);
template void over(std::uint8_t*, const std::uint8_t*, int);
template void over(std::uint16_t*, const std::uint16_t*, int);
template void average(std::uint8_t*, const std::uint8_t* const[4], int);
template void average(std::uint16_t*, const std::uint16_t* const[4], int);
template void halve(std::uint8_t*, const std::uint8_t*, const std::uint8_t*, int);
template void halve(std::uint16_t*, const std::uint16_t*, const std::uint16_t*, int);
template bool weigh_rows(std::uint16_t*, const std::uint8_t* const[TAPS], const std::int16_t[TAPS],
                         int, int);
template bool weigh_rows(float*, const std::uint16_t* const[TAPS], const float[TAPS], int, int);
template void weigh_columns(std::uint8_t*, const std::uint16_t*, const Taps<std::uint8_t>*, int);
template void weigh_columns(std::uint16_t*, const float*, const Taps<std::uint16_t>*, int);

template <class Sample> CommonBits look_at_block(const unsigned char* from, std::size_t row_bytes)
{
    using Vector [[gnu::vector_size(16)]] = std::uint64_t;
    constexpr std::size_t COUNT = BLOCK * 4 * sizeof(Sample) / sizeof(Vector);
    Vector any = {};
    Vector all = ~any;
    for (int y = 0; y < BLOCK; ++y, from += row_bytes)
        for (std::size_t i = 0; i < COUNT; ++i) {
            Vector pixels;
            std::memcpy(&pixels, from + i * sizeof(pixels), sizeof(pixels));
            any |= pixels;
            all &= pixels;
        }
    return {any[0] | any[1], all[0] & all[1]};
}
template CommonBits look_at_block<std::uint8_t>(const unsigned char*, std::size_t);
template CommonBits look_at_block<std::uint16_t>(const unsigned char*, std::size_t);

} // namespace plain

namespace {
template <class Sample>
constexpr Kernels<Sample> PLAIN = {plain::sample_nearest<Sample>, plain::sample_bilinear<Sample>,
                                   plain::mix_rows<Sample>,       plain::mix_columns<Sample>,
                                   plain::pick<Sample>,           plain::over<Sample>,
                                   plain::average<Sample>,        plain::halve<Sample>,
                                   plain::weigh_rows<Sample>,     plain::weigh_columns<Sample>,
                                   plain::look_at_block<Sample>};

template <class Sample> const Kernels<Sample>& find_fastest()
{
    const Kernels<Sample>* avx2 = inq_avx2_kernels<Sample>();
    return avx2 ? *avx2 : inq_plain_kernels<Sample>();
}
} // namespace

template <> const Kernels<std::uint8_t>& inq_plain_kernels()
{
    return PLAIN<std::uint8_t>;
}

template <> const Kernels<std::uint16_t>& inq_plain_kernels()
{
    return PLAIN<std::uint16_t>;
}

template <> const Kernels<std::uint8_t>& inq_kernels()
{
    static const Kernels<std::uint8_t>& fastest = find_fastest<std::uint8_t>();
    return fastest;
}

template <> const Kernels<std::uint16_t>& inq_kernels()
{
    static const Kernels<std::uint16_t>& fastest = find_fastest<std::uint16_t>();
    return fastest;
}
