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
using Pixel = float __attribute__((vector_size(SAMPLES * sizeof(float))));

template <class Sample> struct Packed;
template <> struct Packed<std::uint8_t> {
    using Type = std::uint8_t __attribute__((vector_size(LANES)));
};
template <> struct Packed<std::uint16_t> {
    using Type = std::uint16_t __attribute__((vector_size(LANES * sizeof(std::uint16_t))));
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
        sum += __builtin_convertvector(__builtin_convertvector(packed, Ints), Floats);
        store(sums + i, sum);
    }
    for (; i < count; ++i)
        sums[i] += static_cast<float>(samples[i]);
}

LOOP void gather_loop(float* out, const float* in, int factor, std::size_t out_pixels)
{
    for (std::size_t i = 0; i < out_pixels; ++i, out += SAMPLES) {
        Pixel sum;
        load(sum, in);
        in += SAMPLES;
        for (int k = 1; k < factor; ++k, in += SAMPLES) {
            Pixel next;
            load(next, in);
            sum += next;
        }
        store(out, sum);
    }
}

LOOP void weigh_loop(float* out, const float* const* rows, const float* weights, int pairs,
                     std::size_t count)
{
    constexpr std::size_t N = BLUR_STEP / LANES;
    for (std::size_t i = 0; i < count; i += BLUR_STEP) {
        Floats sums[N];
        for (std::size_t k = 0; k < N; ++k) {
            load(sums[k], rows[0] + i + k * LANES);
            sums[k] *= weights[0];
        }
        for (int pair = 1; pair <= pairs; ++pair) {
            const float* const before = rows[2 * pair - 1] + i;
            const float* const behind = rows[2 * pair] + i;
            for (std::size_t k = 0; k < N; ++k) {
                Floats a;
                Floats b;
                load(a, before + k * LANES);
                load(b, behind + k * LANES);
                sums[k] += (a + b) * weights[pair];
            }
        }
        for (std::size_t k = 0; k < N; ++k)
            store(out + i + k * LANES, sums[k]);
    }
}

LOOP void mix_loop(float* out, const float* a, const float* b, float share, std::size_t count)
{
    for (std::size_t i = 0; i < count; i += LANES) {
        Floats from;
        Floats to;
        load(from, a + i);
        load(to, b + i);
        from += (to - from) * share;
        store(out + i, from);
    }
}

LOOP void spread_loop(float* out, const float* in, int factor, int step, std::size_t out_pixels)
{
    const float step_share = 1.0F / static_cast<float>(factor);
    for (; out_pixels > 0; in += SAMPLES, step = 0) {
        Pixel from;
        Pixel way;
        load(from, in);
        load(way, in + SAMPLES);
        way -= from;
        for (; step < factor && out_pixels > 0; ++step, --out_pixels, out += SAMPLES) {
            const Pixel pixel = from + way * ((static_cast<float>(step) + 0.5F) * step_share);
            store(out, pixel);
        }
    }
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
        store(out + i, __builtin_convertvector(__builtin_convertvector(value, Ints),
                                               typename Packed<Sample>::Type));
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
    target void gather(float* out, const float* in, int factor, std::size_t out_pixels)            \
    { gather_loop(out, in, factor, out_pixels); }                                                  \
    target void weigh(float* out, const float* const* rows, const float* weights, int pairs,       \
                      std::size_t count)                                                           \
    { weigh_loop(out, rows, weights, pairs, count); }                                              \
    target void mix(float* out, const float* a, const float* b, float share, std::size_t count)    \
    { mix_loop(out, a, b, share, count); }                                                         \
    target void spread(float* out, const float* in, int factor, int step, std::size_t out_pixels)  \
    { spread_loop(out, in, factor, step, out_pixels); }                                            \
    target void round_8(std::uint8_t* out, const float* in, std::size_t count)                     \
    { round_loop(out, in, count); }                                                                \
    target void round_16(std::uint16_t* out, const float* in, std::size_t count)                   \
    { round_loop(out, in, count); }                                                                \
    constexpr BlurKernels ALL = {add_8, add_16, gather, weigh, mix, spread, round_8, round_16};    \
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
