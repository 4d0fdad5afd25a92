#include "imagelib/src/Tile.h"
#include "imagelib/src/kernels.h"

#if defined(__x86_64__)

#include <immintrin.h>

// Eight pixels of 8 bits, or four of 16, to a step. The pixels that are left over take the plain
// loops, which give the same bits: so no fused multiplication here.
#define AVX2 __attribute__((target("avx2")))
#define AVX2_INLINE __attribute__((target("avx2"), always_inline)) inline

namespace {
constexpr int STEP_8 = 8;
constexpr int STEP_16 = 4;

/// The rows that the next lines of a target will want, where a turned walk hides them from the
/// processor's own guess.
constexpr int ROWS_AHEAD = 4;

AVX2 __m256i load(const void* from)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

AVX2 __m128i load_16_bytes(const void* from)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

AVX2 void store(void* to, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

AVX2 bool is_zero(__m256i value)
{
    return _mm256_testz_si256(value, value) != 0;
}

/// Whether all bits of `mask` are set in `value`.
AVX2 bool has_all(__m256i value, __m256i mask)
{
    return _mm256_testc_si256(value, mask) != 0;
}

AVX2 int load_pixel(const unsigned char* from)
{
    int pixel;
    std::memcpy(&pixel, from, sizeof(pixel));
    return pixel;
}

/// Eight pixels of 8 bits; the processor's own instruction for it is slower.
AVX2 __m256i gather(const unsigned char* base, const int* places, std::ptrdiff_t unit)
{
    const auto at = [&](int i) AVX2 { return load_pixel(base + places[i] * unit); };
    return _mm256_setr_epi32(at(0), at(1), at(2), at(3), at(4), at(5), at(6), at(7));
}

/// The walk from its next place on after so many.
SourceWalk step_on(const SourceWalk& walk, std::int64_t pixels)
{
    return {walk.u + pixels * walk.du, walk.v + pixels * walk.dv, walk.du, walk.dv};
}

/// The places of eight pixels of a walk, so arranged that the halves of their 64 bits unpack in
/// the order of the pixels.
struct Places {
    __m256i first;  // of pixels 0, 1, 4, 5
    __m256i second; // of pixels 2, 3, 6, 7
    __m256i step;

    AVX2 Places(std::int64_t start, std::int64_t one)
        : first(_mm256_setr_epi64x(start, start + one, start + 4 * one, start + 5 * one)),
          second(_mm256_setr_epi64x(start + 2 * one, start + 3 * one, start + 6 * one,
                                    start + 7 * one)),
          step(_mm256_set1_epi64x(STEP_8 * one))
    {}

    AVX2 void advance()
    {
        first = _mm256_add_epi64(first, step);
        second = _mm256_add_epi64(second, step);
    }
    template <int WHICH> AVX2 __m256i halves() const
    {
        return _mm256_castps_si256(
            _mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(second), WHICH));
    }
    AVX2 __m256i wholes() const { return halves<0xDD>(); }
    AVX2 __m256i fractions() const { return halves<0x88>(); }
};

/// Where the pixels of 8 bits at eight places begin, counted from the source's first.
AVX2_INLINE void store_offsets(int (&offsets)[STEP_8], const Places& u, const Places& v,
                               __m256i row_bytes)
{
    _mm256_store_si256(reinterpret_cast<__m256i*>(offsets),
                       _mm256_add_epi32(_mm256_mullo_epi32(v.wholes(), row_bytes),
                                        _mm256_slli_epi32(u.wholes(), 2)));
}

/// The places of four pixels of a walk.
struct FourPlaces {
    __m256i places;
    __m256i step;

    AVX2_INLINE FourPlaces(std::int64_t start, std::int64_t one)
        : places(_mm256_setr_epi64x(start, start + one, start + 2 * one, start + 3 * one)),
          step(_mm256_set1_epi64x(STEP_16 * one))
    {}

    AVX2_INLINE void advance() { places = _mm256_add_epi64(places, step); }
    AVX2_INLINE __m128i wholes() const { return halves(_mm256_setr_epi32(1, 3, 5, 7, 1, 3, 5, 7)); }
    AVX2_INLINE __m128i fractions() const
    {
        return halves(_mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
    }
    AVX2_INLINE __m128i halves(__m256i which) const
    {
        return _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(places, which));
    }
};

/// A weight of 15 bits in both halves of each 32 bits.
AVX2 __m256i weights(const Places& places)
{
    const __m256i weight = _mm256_srli_epi32(places.fractions(), 17);
    return _mm256_or_si256(weight, _mm256_slli_epi32(weight, 16));
}

/// Two neighbouring pixels at each of two places, as 16 bits a sample.
AVX2 __m256i load_two_pairs(const unsigned char* a, const unsigned char* b)
{
    const __m128i low = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(a));
    const __m128 both = _mm_loadh_pi(_mm_castsi128_ps(low), reinterpret_cast<const __m64*>(b));
    return _mm256_cvtepu8_epi16(_mm_castps_si128(both));
}

AVX2 __m256i mix(__m256i a, __m256i b, __m256i weight)
{
    return _mm256_add_epi16(a, _mm256_mulhrs_epi16(_mm256_sub_epi16(b, a), weight));
}

/// Halfway results of pixel pairs to pixels: two pairs in each argument.
AVX2 __m256i mix_columns(__m256i a, __m256i b, __m256i weight)
{
    const __m256i left = _mm256_unpacklo_epi64(a, b);
    const __m256i right = _mm256_unpackhi_epi64(a, b);
    const __m256i half = _mm256_set1_epi16(1 << 5);
    return _mm256_srli_epi16(_mm256_add_epi16(mix(left, right, weight), half), 6);
}

AVX2 void prefetch_below(const SourcePixels& source, std::ptrdiff_t offset)
{
    _mm_prefetch(reinterpret_cast<const char*>(source.data) + offset +
                     ROWS_AHEAD * std::ptrdiff_t{source.row_bytes},
                 _MM_HINT_T0);
}

AVX2 void sample_bilinear_8(std::uint8_t* out, const SourcePixels& source, SourceWalk walk,
                            int pixels)
{
    Places u(walk.u, walk.du);
    Places v(walk.v, walk.dv);
    const __m256i row_bytes = _mm256_set1_epi32(source.row_bytes);
    int left = pixels;
    for (; left >= STEP_8; left -= STEP_8, out += 4 * STEP_8, u.advance(), v.advance()) {
        alignas(32) int offsets[STEP_8];
        store_offsets(offsets, u, v, row_bytes);
        __m256i upper[4];
        __m256i lower[4];
        __m256i all = _mm256_setzero_si256();
        for (int i = 0; i < 4; ++i) {
            const unsigned char* a = source.data + offsets[i];
            const unsigned char* b = source.data + offsets[i + 4];
            upper[i] = load_two_pairs(a, b);
            lower[i] = load_two_pairs(a + source.row_bytes, b + source.row_bytes);
            all = _mm256_or_si256(all, _mm256_or_si256(upper[i], lower[i]));
        }
        prefetch_below(source, offsets[0]);
        if (is_zero(all)) {
            store(out, all);
            continue;
        }
        for (int i = 0; i < 4; ++i) {
            upper[i] = _mm256_slli_epi16(upper[i], 6);
            lower[i] = _mm256_slli_epi16(lower[i], 6);
        }
        const __m256i down = weights(v);
        const __m256i right = weights(u);
        const __m256i p0 = mix(upper[0], lower[0], _mm256_shuffle_epi32(down, 0x00));
        const __m256i p1 = mix(upper[1], lower[1], _mm256_shuffle_epi32(down, 0x55));
        const __m256i p2 = mix(upper[2], lower[2], _mm256_shuffle_epi32(down, 0xAA));
        const __m256i p3 = mix(upper[3], lower[3], _mm256_shuffle_epi32(down, 0xFF));
        store(out, _mm256_packus_epi16(mix_columns(p0, p1, _mm256_shuffle_epi32(right, 0x50)),
                                       mix_columns(p2, p3, _mm256_shuffle_epi32(right, 0xFA))));
    }
    plain::sample_bilinear(out, source, step_on(walk, pixels - left), left);
}

AVX2 void sample_nearest_8(std::uint8_t* out, const SourcePixels& source, SourceWalk walk,
                           int pixels)
{
    Places u(walk.u, walk.du);
    Places v(walk.v, walk.dv);
    const __m256i row_bytes = _mm256_set1_epi32(source.row_bytes);
    int left = pixels;
    for (; left >= STEP_8; left -= STEP_8, out += 4 * STEP_8, u.advance(), v.advance()) {
        alignas(32) int offsets[STEP_8];
        store_offsets(offsets, u, v, row_bytes);
        prefetch_below(source, offsets[0]);
        store(out, gather(source.data, offsets, 1));
    }
    plain::sample_nearest(out, source, step_on(walk, pixels - left), left);
}

/// Where the step at `i` begins: the last step of a row goes over pixels a second time.
int step_within(int i, int pixels, int step)
{
    return std::min(i, pixels - step);
}

AVX2 bool mix_rows_8(std::uint16_t* out, const std::uint8_t* upper, const std::uint8_t* lower,
                     std::uint32_t down, int pixels)
{
    constexpr int STEP = 4;
    if (pixels < STEP)
        return plain::mix_rows(out, upper, lower, down, pixels);
    const __m256i weight = _mm256_set1_epi16(static_cast<std::int16_t>(down >> 17));
    __m256i all = _mm256_setzero_si256();
    for (int i = 0; i < pixels; i += STEP) {
        const std::ptrdiff_t at = 4 * step_within(i, pixels, STEP);
        const __m256i a = _mm256_cvtepu8_epi16(load_16_bytes(upper + at));
        const __m256i b = _mm256_cvtepu8_epi16(load_16_bytes(lower + at));
        all = _mm256_or_si256(all, _mm256_or_si256(a, b));
        store(out + at, mix(_mm256_slli_epi16(a, 6), _mm256_slli_epi16(b, 6), weight));
    }
    return !is_zero(all);
}

AVX2 __m256i load_halves(const void* low, const void* high)
{
    return _mm256_inserti128_si256(_mm256_castsi128_si256(load_16_bytes(low)), load_16_bytes(high),
                                   1);
}

AVX2 void mix_columns_8(std::uint8_t* out, const std::uint16_t* mixed, const Columns& columns,
                        int pixels)
{
    if (pixels < STEP_8)
        return plain::mix_columns(out, mixed, columns, pixels);
    for (int i = 0; i < pixels; i += STEP_8) {
        const int first = step_within(i, pixels, STEP_8);
        const int* at = columns.columns + first;
        const __m256i p0 = load_halves(mixed + 4 * at[0], mixed + 4 * at[4]);
        const __m256i p1 = load_halves(mixed + 4 * at[1], mixed + 4 * at[5]);
        const __m256i p2 = load_halves(mixed + 4 * at[2], mixed + 4 * at[6]);
        const __m256i p3 = load_halves(mixed + 4 * at[3], mixed + 4 * at[7]);
        const __m256i all = _mm256_or_si256(_mm256_or_si256(p0, p1), _mm256_or_si256(p2, p3));
        if (is_zero(all)) {
            store(out + 4 * first, all);
            continue;
        }
        const __m256i raw = _mm256_srli_epi32(load(columns.fractions + first), 17);
        const __m256i right = _mm256_or_si256(raw, _mm256_slli_epi32(raw, 16));
        store(out + 4 * first,
              _mm256_packus_epi16(mix_columns(p0, p1, _mm256_shuffle_epi32(right, 0x50)),
                                  mix_columns(p2, p3, _mm256_shuffle_epi32(right, 0xFA))));
    }
}

AVX2 void pick_8(std::uint8_t* out, const std::uint8_t* row, const Columns& columns, int pixels)
{
    if (pixels < STEP_8)
        return plain::pick(out, row, columns, pixels);
    for (int i = 0; i < pixels; i += STEP_8) {
        const int first = step_within(i, pixels, STEP_8);
        store(out + 4 * first, gather(row, columns.columns + first, 4));
    }
}

/// target * rest / 255 of 16 samples, as samples::multiply.
AVX2 __m256i multiply_8(__m256i target, __m256i rest)
{
    const __m256i product =
        _mm256_add_epi16(_mm256_mullo_epi16(target, rest), _mm256_set1_epi16(0x80));
    return _mm256_srli_epi16(_mm256_add_epi16(product, _mm256_srli_epi16(product, 8)), 8);
}

AVX2 void over_8(std::uint8_t* target, const std::uint8_t* source, int pixels)
{
    const __m256i alphas = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i spread = _mm256_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15,
                                            3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
    int left = pixels;
    for (; left >= STEP_8; left -= STEP_8, target += 4 * STEP_8, source += 4 * STEP_8) {
        const __m256i s = load(source);
        if (has_all(s, alphas)) {
            store(target, s);
            continue;
        }
        if (is_zero(s))
            continue;
        const __m256i t = load(target);
        const __m256i rest = _mm256_xor_si256(_mm256_shuffle_epi8(s, spread), _mm256_set1_epi8(-1));
        const __m256i low =
            multiply_8(_mm256_unpacklo_epi8(t, zero), _mm256_unpacklo_epi8(rest, zero));
        const __m256i high =
            multiply_8(_mm256_unpackhi_epi8(t, zero), _mm256_unpackhi_epi8(rest, zero));
        store(target, _mm256_adds_epu8(s, _mm256_packus_epi16(low, high)));
    }
    plain::over(target, source, left);
}

/// target * rest / 65535 of 16 samples, as samples::multiply: the product is kept in halves, and
/// its carries are added by hand.
AVX2 __m256i multiply_16(__m256i target, __m256i rest)
{
    const __m256i product_low = _mm256_mullo_epi16(target, rest);
    const __m256i high =
        _mm256_add_epi16(_mm256_mulhi_epu16(target, rest), _mm256_srli_epi16(product_low, 15));
    const __m256i low = _mm256_xor_si256(product_low, _mm256_set1_epi16(-0x8000));
    const __m256i sum = _mm256_add_epi16(low, high);
    const __m256i no_carry = _mm256_cmpeq_epi16(_mm256_max_epu16(sum, low), sum);
    return _mm256_add_epi16(_mm256_add_epi16(high, _mm256_set1_epi16(1)), no_carry);
}

AVX2 void over_16(std::uint16_t* target, const std::uint16_t* source, int pixels)
{
    const __m256i alphas = _mm256_set1_epi64x(static_cast<std::int64_t>(0xFFFF000000000000ULL));
    const __m256i spread = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15,
                                            6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
    int left = pixels;
    for (; left >= STEP_16; left -= STEP_16, target += 4 * STEP_16, source += 4 * STEP_16) {
        const __m256i s = load(source);
        if (has_all(s, alphas)) {
            store(target, s);
            continue;
        }
        if (is_zero(s))
            continue;
        const __m256i rest = _mm256_xor_si256(_mm256_shuffle_epi8(s, spread), _mm256_set1_epi8(-1));
        store(target, _mm256_adds_epu16(s, multiply_16(load(target), rest)));
    }
    plain::over(target, source, left);
}

AVX2 __m256 to_floats(const void* two_pixels)
{
    return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(load_16_bytes(two_pixels)));
}

AVX2 __m256 mix(__m256 a, __m256 b, __m256 weight)
{
    return _mm256_add_ps(a, _mm256_mul_ps(_mm256_sub_ps(b, a), weight));
}

/// Two pixels from the halfway results of their pairs.
AVX2 __m256i mix_columns(__m256 a, __m256 b, float right_a, float right_b)
{
    const __m256 left = _mm256_permute2f128_ps(a, b, 0x20);
    const __m256 right = _mm256_permute2f128_ps(a, b, 0x31);
    const __m256 weight = _mm256_set_m128(_mm_set1_ps(right_b), _mm_set1_ps(right_a));
    return _mm256_cvtps_epi32(mix(left, right, weight));
}

AVX2 bool mix_rows_16(float* out, const std::uint16_t* upper, const std::uint16_t* lower,
                      std::uint32_t down, int pixels)
{
    const __m256 weight = _mm256_set1_ps(static_cast<float>(down >> 9) / (1 << 23));
    __m128i all = _mm_setzero_si128();
    int i = 0;
    for (; i + 2 <= pixels; i += 2, upper += 8, lower += 8, out += 8) {
        all = _mm_or_si128(all, _mm_or_si128(load_16_bytes(upper), load_16_bytes(lower)));
        _mm256_storeu_ps(out, mix(to_floats(upper), to_floats(lower), weight));
    }
    const bool rest = plain::mix_rows(out, upper, lower, down, pixels - i);
    return rest || _mm_testz_si128(all, all) == 0;
}

AVX2 void mix_columns_16(std::uint16_t* out, const float* mixed, const Columns& columns, int pixels)
{
    const auto pair_at = [&](int i) AVX2 {
        return _mm256_loadu_ps(mixed + std::ptrdiff_t{4} * columns.columns[i]);
    };
    const auto share_at = [&](int i) AVX2 {
        return static_cast<float>(columns.fractions[i] >> 9) * (1.0F / (1 << 23));
    };
    int i = 0;
    for (; i + STEP_16 <= pixels; i += STEP_16, out += 4 * STEP_16)
        store(out,
              _mm256_packus_epi32(
                  mix_columns(pair_at(i), pair_at(i + 2), share_at(i), share_at(i + 2)),
                  mix_columns(pair_at(i + 1), pair_at(i + 3), share_at(i + 1), share_at(i + 3))));
    plain::mix_columns(out, mixed, {columns.columns + i, columns.fractions + i}, pixels - i);
}

/// The weights of four pixels' neighbours, left and right in the halves of 32 bits.
struct FourWeights {
    __m128i upper;
    __m128i lower;

    /// `u`, `v`: of 14 bits.
    AVX2_INLINE FourWeights(__m128i u, __m128i v)
    {
        const __m128i half = _mm_set1_epi32(1 << (plain::NEIGHBOUR_BITS - 1));
        const __m128i whole = _mm_set1_epi32(1 << plain::NEIGHBOUR_BITS);
        const __m128i both =
            _mm_srli_epi32(_mm_add_epi32(_mm_mullo_epi32(u, v), half), plain::NEIGHBOUR_BITS);
        const __m128i neither = _mm_add_epi32(_mm_sub_epi32(_mm_sub_epi32(whole, u), v), both);
        upper = _mm_or_si128(neither, _mm_slli_epi32(_mm_sub_epi32(u, both), 16));
        lower = _mm_or_si128(_mm_sub_epi32(v, both), _mm_slli_epi32(both, 16));
    }
};

/// Two pixels with their right neighbours: left and right samples by turns, as signed numbers.
AVX2_INLINE __m256i load_neighbours(const unsigned char* a, const unsigned char* b)
{
    const __m256i by_turns = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15,
                                              0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    return _mm256_shuffle_epi8(_mm256_xor_si256(load_halves(a, b), _mm256_set1_epi16(-0x8000)),
                               by_turns);
}

/// Two pixels, each of four that are weighed, as signed numbers of 32 bits. `which`: the places of
/// their weights.
AVX2_INLINE __m256i weigh_neighbours(const unsigned char* a, const unsigned char* b, int row_bytes,
                                     const FourWeights& weights, __m256i which)
{
    const __m256i upper = _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(weights.upper), which);
    const __m256i lower = _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(weights.lower), which);
    const __m256i sum =
        _mm256_add_epi32(_mm256_madd_epi16(load_neighbours(a, b), upper),
                         _mm256_madd_epi16(load_neighbours(a + row_bytes, b + row_bytes), lower));
    return _mm256_srai_epi32(
        _mm256_add_epi32(sum, _mm256_set1_epi32(1 << (plain::NEIGHBOUR_BITS - 1))),
        plain::NEIGHBOUR_BITS);
}

AVX2 void sample_bilinear_16(std::uint16_t* out, const SourcePixels& source, SourceWalk walk,
                             int pixels)
{
    constexpr int SHIFT = 32 - plain::NEIGHBOUR_BITS;
    const __m256i first_two = _mm256_setr_epi32(0, 0, 0, 0, 2, 2, 2, 2);
    const __m256i last_two = _mm256_setr_epi32(1, 1, 1, 1, 3, 3, 3, 3);
    const __m128i row_bytes = _mm_set1_epi32(source.row_bytes);
    FourPlaces u(walk.u, walk.du);
    FourPlaces v(walk.v, walk.dv);
    int left = pixels;
    for (; left >= STEP_16; left -= STEP_16, out += 4 * STEP_16, u.advance(), v.advance()) {
        alignas(16) int offsets[STEP_16];
        _mm_store_si128(
            reinterpret_cast<__m128i*>(offsets),
            _mm_add_epi32(_mm_mullo_epi32(v.wholes(), row_bytes), _mm_slli_epi32(u.wholes(), 3)));
        const auto at = [&](int i) { return source.data + offsets[i]; };
        prefetch_below(source, offsets[0]);
        const FourWeights weights(_mm_srli_epi32(u.fractions(), SHIFT),
                                  _mm_srli_epi32(v.fractions(), SHIFT));
        const __m256i a = weigh_neighbours(at(0), at(2), source.row_bytes, weights, first_two);
        const __m256i b = weigh_neighbours(at(1), at(3), source.row_bytes, weights, last_two);
        store(out, _mm256_xor_si256(_mm256_packs_epi32(a, b), _mm256_set1_epi16(-0x8000)));
    }
    plain::sample_bilinear(out, source, step_on(walk, pixels - left), left);
}

template <class Sample> AVX2 __m256i widen_sum(__m128i a, __m128i b)
{
    if constexpr (sizeof(Sample) == 1)
        return _mm256_add_epi16(_mm256_cvtepu8_epi16(a), _mm256_cvtepu8_epi16(b));
    else
        return _mm256_add_epi32(_mm256_cvtepu16_epi32(a), _mm256_cvtepu16_epi32(b));
}

/// A quarter of the sum, rounded, as 16 bytes of samples.
template <class Sample> AVX2 __m128i quarter(__m256i sum)
{
    if constexpr (sizeof(Sample) == 1) {
        sum = _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(2)), 2);
        sum = _mm256_packus_epi16(sum, sum);
    } else {
        sum = _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(2)), 2);
        sum = _mm256_packus_epi32(sum, sum);
    }
    return _mm256_castsi256_si128(_mm256_permute4x64_epi64(sum, 0x08));
}

template <class Sample> AVX2 __m256i add(__m256i a, __m256i b)
{
    return sizeof(Sample) == 1 ? _mm256_add_epi16(a, b) : _mm256_add_epi32(a, b);
}

template <class Sample> AVX2 void average(Sample* out, const Sample* const rows[4], int pixels)
{
    constexpr int STEP = 16 / (4 * sizeof(Sample)); // pixels in 16 bytes
    int i = 0;
    for (; i + STEP <= pixels; i += STEP) {
        const int at = 4 * i;
        const __m256i sum = add<Sample>(
            widen_sum<Sample>(load_16_bytes(rows[0] + at), load_16_bytes(rows[1] + at)),
            widen_sum<Sample>(load_16_bytes(rows[2] + at), load_16_bytes(rows[3] + at)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), quarter<Sample>(sum));
    }
    const Sample* const rest[4] = {rows[0] + 4 * i, rows[1] + 4 * i, rows[2] + 4 * i,
                                   rows[3] + 4 * i};
    plain::average(out + 4 * i, rest, pixels - i);
}

/// Of eight pixels each, the means of 2 by 2 with 16 bits a sample.
AVX2 __m256i average_pairs(const std::uint8_t* upper, const std::uint8_t* lower)
{
    const __m256i side_by_side = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15));
    const auto add = [&](const std::uint8_t* row) AVX2 {
        return _mm256_maddubs_epi16(_mm256_shuffle_epi8(load(row), side_by_side),
                                    _mm256_set1_epi8(1));
    };
    const __m256i sum = _mm256_add_epi16(add(upper), add(lower));
    return _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(2)), 2);
}

AVX2 void halve_8(std::uint8_t* out, const std::uint8_t* upper, const std::uint8_t* lower,
                  int out_pixels)
{
    int i = 0;
    for (; i + 8 <= out_pixels; i += 8, out += 32, upper += 64, lower += 64) {
        const __m256i means =
            _mm256_packus_epi16(average_pairs(upper, lower), average_pairs(upper + 32, lower + 32));
        store(out, _mm256_permute4x64_epi64(means, 0xD8)); // which packing mixed up
    }
    plain::halve(out, upper, lower, out_pixels - i);
}

AVX2 void halve_16(std::uint16_t* out, const std::uint16_t* upper, const std::uint16_t* lower,
                   int out_pixels)
{
    int i = 0;
    for (; i + 2 <= out_pixels; i += 2, out += 8, upper += 16, lower += 16) {
        const __m256i first = widen_sum<std::uint16_t>(load_16_bytes(upper), load_16_bytes(lower));
        const __m256i second =
            widen_sum<std::uint16_t>(load_16_bytes(upper + 8), load_16_bytes(lower + 8));
        const __m256i sum = _mm256_add_epi32(_mm256_permute2x128_si256(first, second, 0x20),
                                             _mm256_permute2x128_si256(first, second, 0x31));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), quarter<std::uint16_t>(sum));
    }
    plain::halve(out, upper, lower, out_pixels - i);
}

template <int ROWS>
AVX2 bool weigh_rows_8(std::uint16_t* out, const std::uint8_t* const rows[TAPS],
                       const std::int16_t shares[TAPS], int pixels)
{
    constexpr int STEP = 4;
    __m256i weights[ROWS];
#pragma GCC unroll 4
    for (int k = 0; k < ROWS; ++k)
        weights[k] = _mm256_set1_epi16(shares[k]);
    __m256i all = _mm256_setzero_si256();
    for (int i = 0; i < pixels; i += STEP) {
        const std::ptrdiff_t at = 4 * step_within(i, pixels, STEP);
        __m256i sum = _mm256_setzero_si256();
#pragma GCC unroll 4
        for (int k = 0; k < ROWS; ++k) {
            const __m256i row = _mm256_cvtepu8_epi16(load_16_bytes(rows[k] + at));
            sum = _mm256_add_epi16(sum, _mm256_mulhrs_epi16(_mm256_slli_epi16(row, 6), weights[k]));
        }
        all = _mm256_or_si256(all, sum);
        store(out + at, sum);
    }
    return !is_zero(all);
}

template <int ROWS>
AVX2 bool weigh_rows_16(float* out, const std::uint16_t* const rows[TAPS], const float shares[TAPS],
                        int pixels)
{
    constexpr int STEP = 2;
    __m256 weights[ROWS];
#pragma GCC unroll 4
    for (int k = 0; k < ROWS; ++k)
        weights[k] = _mm256_set1_ps(shares[k]);
    __m256 all = _mm256_setzero_ps();
    for (int i = 0; i < pixels; i += STEP) {
        const std::ptrdiff_t at = 4 * step_within(i, pixels, STEP);
        __m256 sum = _mm256_setzero_ps();
#pragma GCC unroll 4
        for (int k = 0; k < ROWS; ++k)
            sum = _mm256_add_ps(sum, _mm256_mul_ps(to_floats(rows[k] + at), weights[k]));
        all = _mm256_or_ps(all, sum);
        _mm256_storeu_ps(out + at, sum);
    }
    return !is_zero(_mm256_castps_si256(all));
}

bool weigh_rows_8(std::uint16_t* out, const std::uint8_t* const rows[TAPS],
                  const std::int16_t shares[TAPS], int row_count, int pixels)
{
    if (pixels < 4)
        return plain::weigh_rows(out, rows, shares, row_count, pixels);
    constexpr decltype(&weigh_rows_8<1>) BY_COUNT[] = {weigh_rows_8<1>, weigh_rows_8<2>,
                                                       weigh_rows_8<3>, weigh_rows_8<4>};
    return BY_COUNT[row_count - 1](out, rows, shares, pixels);
}

bool weigh_rows_16(float* out, const std::uint16_t* const rows[TAPS], const float shares[TAPS],
                   int row_count, int pixels)
{
    if (pixels < 2)
        return plain::weigh_rows(out, rows, shares, row_count, pixels);
    constexpr decltype(&weigh_rows_16<1>) BY_COUNT[] = {weigh_rows_16<1>, weigh_rows_16<2>,
                                                        weigh_rows_16<3>, weigh_rows_16<4>};
    return BY_COUNT[row_count - 1](out, rows, shares, pixels);
}

/// The four columns of a pixel in their shares, still side by side.
AVX2 __m256i weigh_taps(const std::uint16_t* mixed, const Taps<std::uint8_t>& taps)
{
    const __m256i spread = _mm256_setr_epi8(0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3, 4, 5, 4,
                                            5, 4, 5, 4, 5, 6, 7, 6, 7, 6, 7, 6, 7);
    const __m256i shares =
        _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(taps.shares)));
    return _mm256_mulhrs_epi16(load(mixed + std::ptrdiff_t{4} * taps.first),
                               _mm256_shuffle_epi8(shares, spread));
}

/// The sums of both halves of each 16 bytes.
AVX2 __m256i add_halves(__m256i a, __m256i b)
{
    return _mm256_add_epi16(_mm256_unpacklo_epi64(a, b), _mm256_unpackhi_epi64(a, b));
}

AVX2 void weigh_columns_8(std::uint8_t* out, const std::uint16_t* mixed,
                          const Taps<std::uint8_t>* taps, int pixels)
{
    constexpr int STEP = 4;
    int i = 0;
    for (; i + STEP <= pixels; i += STEP, taps += STEP, out += 4 * STEP) {
        const __m256i first = add_halves(weigh_taps(mixed, taps[0]), weigh_taps(mixed, taps[1]));
        const __m256i second = add_halves(weigh_taps(mixed, taps[2]), weigh_taps(mixed, taps[3]));
        const __m256i sum = _mm256_add_epi16(_mm256_permute2x128_si256(first, second, 0x20),
                                             _mm256_permute2x128_si256(first, second, 0x31));
        const __m256i whole =
            _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(1 << 5)), 6);
        _mm_storeu_si128(
            reinterpret_cast<__m128i*>(out),
            _mm_packus_epi16(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1)));
    }
    plain::weigh_columns(out, mixed, taps, pixels - i);
}

/// The first and the third column of a pixel, and beside them the second and the fourth.
AVX2 __m256 weigh_taps(const float* mixed, const Taps<std::uint16_t>& taps)
{
    const __m256 shares = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(taps.shares));
    const float* left = mixed + std::ptrdiff_t{4} * taps.first;
    const __m256 first =
        _mm256_mul_ps(_mm256_loadu_ps(left),
                      _mm256_permutevar_ps(shares, _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1)));
    const __m256 second =
        _mm256_mul_ps(_mm256_loadu_ps(left + 8),
                      _mm256_permutevar_ps(shares, _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3)));
    return _mm256_add_ps(first, second);
}

AVX2 __m256i weigh_two(const float* mixed, const Taps<std::uint16_t>& a,
                       const Taps<std::uint16_t>& b)
{
    const __m256 first = weigh_taps(mixed, a);
    const __m256 second = weigh_taps(mixed, b);
    return _mm256_cvtps_epi32(_mm256_add_ps(_mm256_permute2f128_ps(first, second, 0x20),
                                            _mm256_permute2f128_ps(first, second, 0x31)));
}

AVX2 void weigh_columns_16(std::uint16_t* out, const float* mixed, const Taps<std::uint16_t>* taps,
                           int pixels)
{
    int i = 0;
    for (; i + STEP_16 <= pixels; i += STEP_16, taps += STEP_16, out += 4 * STEP_16)
        store(out, _mm256_packus_epi32(weigh_two(mixed, taps[0], taps[2]),
                                       weigh_two(mixed, taps[1], taps[3])));
    plain::weigh_columns(out, mixed, taps, pixels - i);
}

/// The four 64 bits of `any` and of `all`, joined.
AVX2 CommonBits join(__m256i any, __m256i all)
{
    const __m128i some =
        _mm_or_si128(_mm256_castsi256_si128(any), _mm256_extracti128_si256(any, 1));
    const __m128i each =
        _mm_and_si128(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1));
    const auto low = [](__m128i value)
                         AVX2 { return static_cast<std::uint64_t>(_mm_cvtsi128_si64(value)); };
    return {low(some) | low(_mm_unpackhi_epi64(some, some)),
            low(each) & low(_mm_unpackhi_epi64(each, each))};
}

template <class Sample>
AVX2 CommonBits look_at_block(const unsigned char* from, std::size_t row_bytes)
{
    constexpr std::size_t COUNT = BLOCK * 4 * sizeof(Sample) / sizeof(__m256i);
    __m256i any = _mm256_setzero_si256();
    __m256i all = _mm256_cmpeq_epi8(any, any);
    for (int y = 0; y < BLOCK; ++y, from += row_bytes)
        for (std::size_t i = 0; i < COUNT; ++i) {
            const __m256i pixels = load(from + i * sizeof(pixels));
            any = _mm256_or_si256(any, pixels);
            all = _mm256_and_si256(all, pixels);
        }
    return join(any, all);
}

bool can_run()
{
    return __builtin_cpu_supports("avx2") > 0;
}
} // namespace

template <> const Kernels<std::uint8_t>* inq_avx2_kernels()
{
    static constexpr Kernels<std::uint8_t> KERNELS = {sample_nearest_8,
                                                      sample_bilinear_8,
                                                      mix_rows_8,
                                                      mix_columns_8,
                                                      pick_8,
                                                      over_8,
                                                      average<std::uint8_t>,
                                                      halve_8,
                                                      weigh_rows_8,
                                                      weigh_columns_8,
                                                      look_at_block<std::uint8_t>};
    return can_run() ? &KERNELS : nullptr;
}

template <> const Kernels<std::uint16_t>* inq_avx2_kernels()
{
    static constexpr Kernels<std::uint16_t> KERNELS = {plain::sample_nearest<std::uint16_t>,
                                                       sample_bilinear_16,
                                                       mix_rows_16,
                                                       mix_columns_16,
                                                       plain::pick<std::uint16_t>,
                                                       over_16,
                                                       average<std::uint16_t>,
                                                       halve_16,
                                                       weigh_rows_16,
                                                       weigh_columns_16,
                                                       look_at_block<std::uint16_t>};
    return can_run() ? &KERNELS : nullptr;
}

#else

template <> const Kernels<std::uint8_t>* inq_avx2_kernels()
{
    return nullptr;
}

template <> const Kernels<std::uint16_t>* inq_avx2_kernels()
{
    return nullptr;
}

#endif
