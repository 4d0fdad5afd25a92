#include "effects/src/kernels.h"

#include <cstring>
#include <limits>

// Each loop is written once and compiled twice, with and without AVX2. No fused multiplication in
// either, so that the bits are the same.
#define LOOP __attribute__((always_inline)) inline

namespace {
constexpr std::size_t LANES = 8;
constexpr int SAMPLES = 4;

using Floats = float __attribute__((vector_size(LANES * sizeof(float))));
using Ints = std::int32_t __attribute__((vector_size(LANES * sizeof(std::int32_t))));
using Shorts = std::uint16_t __attribute__((vector_size(LANES * sizeof(std::uint16_t))));
using Pixel = float __attribute__((vector_size(SAMPLES * sizeof(float))));

template <class Sample> struct Packed;
template <> struct Packed<std::uint8_t> {
    using Type = std::uint8_t __attribute__((vector_size(LANES)));
};
template <> struct Packed<std::uint16_t> {
    using Type = Shorts;
};

template <class Vector, class Element> LOOP void load(Vector& v, const Element* from)
{
    std::memcpy(&v, from, sizeof(v));
}

template <class Vector, class Element> LOOP void store(Element* to, const Vector& v)
{
    std::memcpy(to, &v, sizeof(v));
}

template <class Sample> LOOP void add_loop(float* sums, const Sample* samples, std::size_t count)
{
    std::size_t i = 0;
    for (; i + LANES <= count; i += LANES) {
        typename Packed<Sample>::Type packed;
        Floats sum;
        load(packed, samples + i);
        load(sum, sums + i);
        const Shorts shorts = __builtin_convertvector(packed, Shorts); // one step is slower
        sum += __builtin_convertvector(__builtin_convertvector(shorts, Ints), Floats);
        store(sums + i, sum);
    }
    for (; i < count; ++i)
        sums[i] += static_cast<float>(samples[i]);
}

LOOP void gather_loop(float* out, const float* in, int factor, std::size_t out_places)
{
    const float part = 1.0F / static_cast<float>(factor);
    Pixel from_before = {};
    for (std::size_t i = 0; i <= out_places; ++i) {
        Pixel all = {};
        Pixel behind = {};
        float share = 0.5F * part;
        for (int k = 0; k < factor; ++k, in += SAMPLES, share += part) {
            Pixel pixel;
            load(pixel, in);
            all += pixel;
            behind += pixel * share;
        }
        const Pixel place = from_before + (all - behind);
        from_before = behind;
        if (i == 0)
            continue; // they lie before the first place, which has only their other part
        store(out, place);
        out += SAMPLES;
    }
}

LOOP void divide_loop(float* before, float* behind, const float* row, float share,
                      std::size_t count)
{
    for (std::size_t i = 0; i < count; i += LANES) {
        Floats value;
        Floats a;
        Floats b;
        load(value, row + i);
        load(a, before + i);
        load(b, behind + i);
        const Floats part = value * share;
        a += value - part;
        b += part;
        store(before + i, a);
        store(behind + i, b);
    }
}

LOOP void add_weighed(Floats& sum, const float* before, const float* behind, float weight)
{
    Floats a;
    Floats b;
    load(a, before);
    load(b, behind);
    sum += (a + b) * weight;
}

// Four vectors at a time, by their names, so that they stay in registers.
LOOP void weigh_loop(float* out, const float* const* rows, const float* weights, int pairs,
                     std::size_t count)
{
    static_assert(BLUR_STEP == 4 * LANES);
    for (std::size_t i = 0; i < count; i += BLUR_STEP) {
        const float* row = rows[0] + i;
        Floats a;
        Floats b;
        Floats c;
        Floats d;
        load(a, row);
        load(b, row + LANES);
        load(c, row + 2 * LANES);
        load(d, row + 3 * LANES);
        a *= weights[0];
        b *= weights[0];
        c *= weights[0];
        d *= weights[0];
        for (int pair = 1; pair <= pairs; ++pair) {
            const float* const before = rows[2 * pair - 1] + i;
            const float* const behind = rows[2 * pair] + i;
            add_weighed(a, before, behind, weights[pair]);
            add_weighed(b, before + LANES, behind + LANES, weights[pair]);
            add_weighed(c, before + 2 * LANES, behind + 2 * LANES, weights[pair]);
            add_weighed(d, before + 3 * LANES, behind + 3 * LANES, weights[pair]);
        }
        store(out + i, a);
        store(out + i + LANES, b);
        store(out + i + 2 * LANES, c);
        store(out + i + 3 * LANES, d);
    }
}

LOOP void mix_loop(float* out, const float* const rows[3], const float shares[3], std::size_t count)
{
    for (std::size_t i = 0; i < count; i += LANES) {
        Floats a;
        Floats b;
        Floats c;
        load(a, rows[0] + i);
        load(b, rows[1] + i);
        load(c, rows[2] + i);
        a = a * shares[0] + b * shares[1] + c * shares[2];
        store(out + i, a);
    }
}

LOOP void spread_loop(float* out, const float* in, const float* shares, int factor, int step,
                      std::size_t out_pixels)
{
    for (; out_pixels > 0; in += SAMPLES, step = 0) {
        Pixel a;
        Pixel b;
        Pixel c;
        load(a, in);
        load(b, in + SAMPLES);
        load(c, in + 2 * SAMPLES);
        for (; step < factor && out_pixels > 0; ++step, --out_pixels, out += SAMPLES) {
            const float* const s = shares + 3 * step;
            const Pixel pixel = a * s[0] + b * s[1] + c * s[2];
            store(out, pixel);
        }
    }
}

/// The low parts of the whole numbers.
LOOP void pack(std::uint8_t* out, const Ints& values)
{
    using Bytes = std::uint8_t __attribute__((vector_size(LANES * sizeof(std::int32_t))));
    Bytes bytes;
    load(bytes, &values);
    store(out, __builtin_shufflevector(bytes, bytes, 0, 4, 8, 12, 16, 20, 24, 28));
}

LOOP void pack(std::uint16_t* out, const Ints& values)
{
    using Words = std::uint16_t __attribute__((vector_size(LANES * sizeof(std::int32_t))));
    Words words;
    load(words, &values);
    store(out, __builtin_shufflevector(words, words, 0, 2, 4, 6, 8, 10, 12, 14));
}

template <class Sample> LOOP void round_loop(Sample* out, const float* in, std::size_t count)
{
    constexpr float MOST = std::numeric_limits<Sample>::max();
    std::size_t i = 0;
    for (; i + LANES <= count; i += LANES) {
        Floats value;
        load(value, in + i);
        value += 0.5F;
        value = value < MOST ? value : Floats{} + MOST;
        const Ints whole = __builtin_convertvector(value, Ints);
        pack(out + i, whole);
    }
    for (; i < count; ++i)
        out[i] = static_cast<Sample>(in[i] + 0.5F < MOST ? in[i] + 0.5F : MOST);
}

// clang-format off
#define KERNELS(name, target)                                                                      \
    namespace name {                                                                               \
    target void add_8(float* sums, const std::uint8_t* samples, std::size_t count)                 \
    { add_loop(sums, samples, count); }                                                            \
    target void add_16(float* sums, const std::uint16_t* samples, std::size_t count)               \
    { add_loop(sums, samples, count); }                                                            \
    target void gather(float* out, const float* in, int factor, std::size_t out_places)            \
    { gather_loop(out, in, factor, out_places); }                                                  \
    target void divide(float* before, float* behind, const float* row, float share,                \
                       std::size_t count)                                                          \
    { divide_loop(before, behind, row, share, count); }                                            \
    target void weigh(float* out, const float* const* rows, const float* weights, int pairs,       \
                      std::size_t count)                                                           \
    { weigh_loop(out, rows, weights, pairs, count); }                                              \
    target void mix(float* out, const float* const rows[3], const float shares[3],                 \
                    std::size_t count)                                                             \
    { mix_loop(out, rows, shares, count); }                                                        \
    target void spread(float* out, const float* in, const float* shares, int factor, int step,     \
                       std::size_t out_pixels)                                                     \
    { spread_loop(out, in, shares, factor, step, out_pixels); }                                    \
    target void round_8(std::uint8_t* out, const float* in, std::size_t count)                     \
    { round_loop(out, in, count); }                                                                \
    target void round_16(std::uint16_t* out, const float* in, std::size_t count)                   \
    { round_loop(out, in, count); }                                                                \
    constexpr BlurKernels ALL = {add_8, add_16, gather,  divide,  weigh,                           \
                                 mix,   spread, round_8, round_16};                                \
    }
// clang-format on

KERNELS(plain, )
#if defined(__x86_64__)
KERNELS(avx2, __attribute__((target("avx2"))))

const BlurKernels& choose_kernels()
{
    return __builtin_cpu_supports("avx2") ? avx2::ALL : plain::ALL;
}
#else
const BlurKernels& choose_kernels()
{
    return plain::ALL;
}
#endif
} // namespace

const BlurKernels& inq_blur_kernels()
{
    static const BlurKernels& kernels = choose_kernels();
    return kernels;
}
