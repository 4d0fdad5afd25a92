#pragma once

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/Mapping.h"
#include "imagelib/src/kernels.h"
#include "imagelib/src/samples.h"

#include <cstring>
#include <limits>
#include <vector>

constexpr int STRIP = 512;        // pixels of a row drawn at once
constexpr int TURNED_STRIP = 256; // of a turned source, so that its rows stay cached

/// One filtered sample a pixel leaves out too much of the image below this scale.
constexpr double SAMPLE_FOUR_BELOW = 0.8;

/// How much of a pixel a band covers that begins `before` pixels to one side of the pixel's centre
/// and ends `after` pixels to the other.
inline double cover_of_band(double before, double after)
{
    return std::max(0.0, std::min(before, 0.5) + std::min(after, 0.5));
}

constexpr double ONE_PLACE = 4294967296.0; // of a walk: 1 << plain::ONE_SHIFT

inline std::int64_t to_walk(double value)
{
    return static_cast<std::int64_t>(
        std::floor(std::clamp(value, -FARTHEST, FARTHEST) * ONE_PLACE + 0.5));
}

/// Multiplies pixels by a share of 65536.
template <class Sample> void dim(Sample* pixels, int count, unsigned share)
{
    for (int i = 0; i < 4 * count; ++i)
        pixels[i] = static_cast<Sample>((std::uint64_t{pixels[i]} * share + 0x8000) >> 16);
}

constexpr unsigned WHOLE_SHARE = 0x10000;

inline unsigned to_share(double value)
{
    return static_cast<unsigned>(std::lround(std::clamp(value, 0.0, 1.0) * WHOLE_SHARE));
}

/// Rows of a target as pixels with alpha. Rows without are brought there strip by strip.
template <class Sample> class TargetRow {
public:
    explicit TargetRow(KIVPixmap& target)
        : target(target), has_alpha(target.inq_alpha()),
          type_with_alpha(make_pix_type(4, target.inq_bits_per_sample()))
    {}

    void draw(int x, int y, const Sample* pixels, int count)
    {
        const Kernels<Sample>& kernels = inq_kernels<Sample>();
        unsigned char* at =
            target.inq_row(y) + static_cast<std::ptrdiff_t>(x) * target.inq_bytes_per_pixel();
        if (has_alpha)
            return kernels.over(reinterpret_cast<Sample*>(at), pixels, count);
        convert_pixels(strip, type_with_alpha, at, target.inq_type(), count);
        kernels.over(strip, pixels, count);
        convert_pixels(at, target.inq_type(), strip, type_with_alpha, count);
    }

private:
    KIVPixmap& target;
    const bool has_alpha;
    const PixType type_with_alpha;
    alignas(64) Sample strip[4 * STRIP];
};

/// Draws a source of the target's depth, with alpha, through a mapping.
template <class Sample> class Painter {
public:
    Painter(KIVPixmap& target, const KIVPixmap& source, const Mapping& mapping,
            const DrawOptions& options)
        : rows(target), kernels(inq_kernels<Sample>()), m(mapping),
          options(options), pixels{source.inq_data(), static_cast<int>(source.inq_row_bytes()),
                                   source.inq_width(), source.inq_height()},
          takes_four(options.filtered &&
                     std::max(m.u_length, m.v_length) > 1.0 / SAMPLE_FOUR_BELOW + SAFE),
          is_level(std::abs(m.u_y) < LEVEL && std::abs(m.v_x) < LEVEL &&
                   std::abs(m.u_x) < MOST_LEVEL_STEP &&
                   (!takes_four || std::abs(m.v_y) < MOST_LEVEL_STEP)),
          is_exact((std::abs(m.u_0) + std::abs(m.v_0) +
                    (std::abs(m.u_x) + std::abs(m.v_x)) * target.inq_width() +
                    (std::abs(m.u_y) + std::abs(m.v_y)) * target.inq_height()) *
                       std::numeric_limits<double>::epsilon() <
                   0.01 * SAFE)
    {}

    void paint(Interval columns, Interval lines)
    {
        is_level ? paint_level(columns, lines) : paint_strips(columns, lines);
    }

private:
    static constexpr int SAMPLES = 4;

    /// Source pixels, against rounding where an edge meets a sample.
    static constexpr double SAFE = 1e-6;

    /// Source pixels by which a place between two counts as on the later one, so that rounding does
    /// not choose. Less than SAFE.
    static constexpr double TIE = 0.5 * SAFE;

    /// Source pixels that a row may rise over its whole length and still count as level.
    static constexpr double LEVEL = 1e-9;

    /// From a pixel's centre to its samples each way, where it takes four.
    static constexpr double SPREAD = 0.25;

    /// Source pixels between neighbours in a level row or column; beyond, rows are not mixed whole
    /// and four samples reach farther than the taps.
    static constexpr double MOST_LEVEL_STEP = 2.05;
    static constexpr int MOST_MIXED = static_cast<int>(MOST_LEVEL_STEP * STRIP) + 2 * TAPS;

    /// What the rows of a source that lies level have in common, for a strip of the target.
    struct LevelStrip {
        Interval inner = {0, 0}; // pixels whose samples have all their neighbours
        int first_column = 0;    // of the source
        int mixed_columns = 0;
        alignas(64) int columns[STRIP]; // of the inner pixels, from the first
        alignas(64) std::uint32_t fractions[STRIP];
        std::vector<Taps<Sample>> taps; // instead, of pixels with four samples
    };

    static Interval strip_at(int x, Interval columns, int width)
    {
        return {x, std::min(x + width, columns.end)};
    }

    /// Strip after strip, so that the rows of a turned source are met again while they are cached.
    void paint_strips(Interval columns, Interval lines)
    {
        for (int x = columns.begin; x < columns.end; x += TURNED_STRIP)
            for (int y = lines.begin; y < lines.end; ++y)
                paint_strip(strip_at(x, columns, TURNED_STRIP), y);
    }

    void paint_level(Interval columns, Interval lines)
    {
        std::vector<LevelStrip> strips;
        for (int x = columns.begin; x < columns.end; x += STRIP)
            find_columns(strips.emplace_back(), strip_at(x, columns, STRIP), lines.begin);
        for (int y = lines.begin; y < lines.end; ++y) {
            level = strips.data();
            for (int x = columns.begin; x < columns.end; x += STRIP, ++level)
                paint_strip(strip_at(x, columns, STRIP), y);
        }
    }

    void find_columns(LevelStrip& found, Interval strip, int y) const
    {
        found.inner = strip;
        found.inner.cut(find_inner_columns(y));
        if (found.inner.size() == 0)
            return;
        if (takes_four)
            return find_taps(found, y);
        SourceWalk walk = make_walk(found.inner.begin, y);
        const std::int64_t last = walk.u + (found.inner.size() - 1) * walk.du;
        const std::int64_t most = std::max(walk.u, last) >> plain::ONE_SHIFT;
        found.first_column = static_cast<int>(std::min(walk.u, last) >> plain::ONE_SHIFT);
        found.mixed_columns = static_cast<int>(most) - found.first_column + 2;
        for (int i = 0; i < found.inner.size(); ++i, walk.u += walk.du) {
            found.columns[i] = static_cast<int>(walk.u >> plain::ONE_SHIFT) - found.first_column;
            found.fractions[i] = static_cast<std::uint32_t>(walk.u);
        }
    }

    /// The mean of two samples along a row or a column.
    static Taps<Sample> make_taps(std::int64_t one, std::int64_t other)
    {
        const std::int64_t first = std::min(one, other) >> plain::ONE_SHIFT;
        float shares[TAPS] = {};
        for (const std::int64_t place : {one, other}) {
            const auto at = static_cast<std::size_t>((place >> plain::ONE_SHIFT) - first);
            const double beyond = static_cast<std::uint32_t>(place) / ONE_PLACE;
            shares[at] += static_cast<float>(0.5 * (1.0 - beyond));
            shares[at + 1] += static_cast<float>(0.5 * beyond);
        }
        return {static_cast<int>(first), shares};
    }

    void find_taps(LevelStrip& found, int y) const
    {
        const int count = found.inner.size();
        const std::int64_t one = make_walk(found.inner.begin - SPREAD, y).u;
        const std::int64_t other = make_walk(found.inner.begin + SPREAD, y).u;
        const std::int64_t step = to_walk(m.u_x);
        found.taps.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            found.taps.push_back(make_taps(one + i * step, other + i * step));
        const int begin = std::min(found.taps.front().first, found.taps.back().first);
        const int end = std::max(found.taps.front().first, found.taps.back().first) + TAPS;
        found.first_column = begin;
        found.mixed_columns = std::min(end, pixels.width) - begin;
        for (Taps<Sample>& taps : found.taps)
            taps.first -= begin;
    }

    /// Four samples to a pixel lie in two rows and two columns, which are weighed one after the
    /// other.
    void weigh_level(Sample* out, Interval inner, int y)
    {
        const std::int64_t one = make_walk(inner.begin, y - SPREAD).v;
        const std::int64_t other = make_walk(inner.begin, y + SPREAD).v;
        const Taps<Sample> down = make_taps(one, other);
        const auto last = static_cast<int>(std::max(one, other) >> plain::ONE_SHIFT) + 1;
        const Sample* lines[TAPS] = {};
        for (int line = down.first; line <= last; ++line)
            lines[line - down.first] = plain::pixel_at<Sample>(pixels, level->first_column, line);
        if (kernels.weigh_rows(mixed, lines, down.shares, last - down.first + 1,
                               level->mixed_columns))
            kernels.weigh_columns(
                out, mixed, level->taps.data() + (inner.begin - level->inner.begin), inner.size());
        else
            std::memset(out, 0, sizeof(Sample) * 4 * static_cast<std::size_t>(inner.size()));
    }

    void sample_level(Sample* out, Interval inner, int y)
    {
        if (takes_four)
            return weigh_level(out, inner, y);
        const SourceWalk walk = make_walk(inner.begin, y);
        const int line = static_cast<int>(walk.v >> plain::ONE_SHIFT);
        const Sample* row = plain::pixel_at<Sample>(pixels, level->first_column, line);
        const int skipped = inner.begin - level->inner.begin;
        const Columns at = {level->columns + skipped, level->fractions + skipped};
        if (!options.filtered)
            return kernels.pick(out, row, at, inner.size());
        const Sample* next = plain::pixel_at<Sample>(pixels, level->first_column, line + 1);
        if (kernels.mix_rows(mixed, row, next, static_cast<std::uint32_t>(walk.v),
                             level->mixed_columns))
            kernels.mix_columns(out, mixed, at, inner.size());
        else
            std::memset(out, 0, sizeof(Sample) * 4 * static_cast<std::size_t>(inner.size()));
    }

    /// Where the samples of a pixel are taken, from its centre; in pixels of the target.
    Place offset_of(int sample) const
    {
        return takes_four ? Place{sample % 2 ? SPREAD : -SPREAD, sample / 2 ? SPREAD : -SPREAD}
                          : Place{0.0, 0.0};
    }

    void paint_strip(Interval strip, int y)
    {
        strip.cut(find_touched(y));
        if (strip.size() == 0)
            return;
        Interval inner = strip;
        inner.cut(find_inner(y));
        if (inner.size() == 0)
            inner = {strip.end, strip.end};
        sample_edge({strip.begin, inner.begin}, y, strip.begin);
        if (inner.size() > 0)
            sample_inner(inner, y, strip.begin);
        sample_edge({inner.end, strip.end}, y, strip.begin);
        if (options.opacity < 1.0)
            dim(buffer, strip.size(), to_share(options.opacity));
        rows.draw(strip.begin, y, buffer, strip.size());
    }

    /// The pixels of a row that the source covers a part of; unfiltered, those whose centre it
    /// covers.
    Interval find_touched(int y) const
    {
        if (!options.filtered) {
            Interval hit = find_inside(m.u_at(0, y), m.u_x, -TIE, m.width - TIE);
            hit.cut(find_inside(m.v_at(0, y), m.v_x, -TIE, m.height - TIE));
            return hit;
        }
        const double reach_u = 0.5 * m.u_length;
        const double reach_v = 0.5 * m.v_length;
        Interval touched = find_inside(m.u_at(0, y), m.u_x, -reach_u, m.width + reach_u);
        touched.cut(find_inside(m.v_at(0, y), m.v_x, -reach_v, m.height + reach_v));
        return touched;
    }

    /// How far from the edge the source's pixels must be taken, for samples with all their
    /// neighbours in pixels that are wholly covered.
    double find_margin(double step_x, double step_y, double length) const
    {
        if (!options.filtered)
            return SAFE;
        const double spread = takes_four ? SPREAD : 0.0;
        const double need = 0.5 + spread * (std::abs(step_x) + std::abs(step_y));
        return std::max(need, 0.5 * length) + SAFE;
    }

    Interval find_inner_columns(int y) const
    {
        const double margin = find_margin(m.u_x, m.u_y, m.u_length);
        return find_inside(m.u_at(0, y), m.u_x, margin, m.width - margin);
    }

    Interval find_inner(int y) const
    {
        if (!is_exact)
            return {0, 0};
        const double margin = find_margin(m.v_x, m.v_y, m.v_length);
        Interval inner = find_inner_columns(y);
        inner.cut(find_inside(m.v_at(0, y), m.v_x, margin, m.height - margin));
        return inner;
    }

    SourceWalk make_walk(double x, double y) const
    {
        const double centre = options.filtered ? 0.5 : -TIE;
        return {to_walk(m.u_at(x, y) - centre), to_walk(m.v_at(x, y) - centre), to_walk(m.u_x),
                to_walk(m.v_x)};
    }

    void sample_inner(Interval inner, int y, int strip_begin)
    {
        Sample* out = buffer + std::ptrdiff_t{4} * (inner.begin - strip_begin);
        if (is_level)
            return sample_level(out, inner, y);
        if (!options.filtered)
            return kernels.sample_nearest(out, pixels, make_walk(inner.begin, y), inner.size());
        if (!takes_four)
            return kernels.sample_bilinear(out, pixels, make_walk(inner.begin, y), inner.size());
        const Sample* parts[SAMPLES];
        for (int i = 0; i < SAMPLES; ++i) {
            const Place offset = offset_of(i);
            kernels.sample_bilinear(samples_of[i], pixels,
                                    make_walk(inner.begin + offset.x, y + offset.y), inner.size());
            parts[i] = samples_of[i];
        }
        kernels.average(out, parts, inner.size());
    }

    void sample_edge(Interval edge, int y, int strip_begin)
    {
        for (int x = edge.begin; x < edge.end; ++x) {
            Sample* out = buffer + std::ptrdiff_t{4} * (x - strip_begin);
            if (!options.filtered) {
                sample_clamped(out, make_walk(x, y));
                continue;
            }
            sample_pixel(out, x, y);
            dim(out, 1, to_share(cover_at(x, y)));
        }
    }

    void sample_pixel(Sample* out, int x, int y)
    {
        if (!takes_four)
            return blend_clamped(out, make_walk(x, y));
        Sample four[SAMPLES][4];
        const Sample* parts[SAMPLES];
        for (int i = 0; i < SAMPLES; ++i) {
            const Place offset = offset_of(i);
            blend_clamped(four[i], make_walk(x + offset.x, y + offset.y));
            parts[i] = four[i];
        }
        plain::average(out, parts, 1);
    }

    /// The share of a pixel that the source covers.
    double cover_at(int x, int y) const
    {
        const double u = m.u_at(x, y);
        const double v = m.v_at(x, y);
        return cover_of_band(u / m.u_length, (m.width - u) / m.u_length) *
               cover_of_band(v / m.v_length, (m.height - v) / m.v_length);
    }

    int column_at(std::int64_t u) const
    {
        return static_cast<int>(std::clamp<std::int64_t>(u, 0, pixels.width - 1));
    }
    int line_at(std::int64_t v) const
    {
        return static_cast<int>(std::clamp<std::int64_t>(v, 0, pixels.height - 1));
    }

    void sample_clamped(Sample* out, const SourceWalk& walk) const
    {
        const int x = column_at(walk.u >> plain::ONE_SHIFT);
        const int y = line_at(walk.v >> plain::ONE_SHIFT);
        std::memcpy(out, plain::pixel_at<Sample>(pixels, x, y), 4 * sizeof(Sample));
    }

    /// The outermost pixels go on beyond the edge.
    void blend_clamped(Sample* out, const SourceWalk& walk) const
    {
        const std::int64_t u = walk.u >> plain::ONE_SHIFT;
        const std::int64_t v = walk.v >> plain::ONE_SHIFT;
        const int left = column_at(u);
        const int right = column_at(u + 1);
        const int upper = line_at(v);
        const int lower = line_at(v + 1);
        const Sample* const four[4] = {plain::pixel_at<Sample>(pixels, left, upper),
                                       plain::pixel_at<Sample>(pixels, right, upper),
                                       plain::pixel_at<Sample>(pixels, left, lower),
                                       plain::pixel_at<Sample>(pixels, right, lower)};
        plain::blend_four(out, four, static_cast<std::uint32_t>(walk.u),
                          static_cast<std::uint32_t>(walk.v));
    }

    TargetRow<Sample> rows;
    const Kernels<Sample>& kernels;
    const Mapping m;
    const DrawOptions options;
    const SourcePixels pixels;
    const bool takes_four;
    const bool is_level;
    const bool is_exact; // places are known well enough to go without looking at the edges
    const LevelStrip* level = nullptr;                    // not owned; that of the present strip
    alignas(64) Mixed<Sample> mixed[4 * MOST_MIXED] = {}; // taps without a share may look beyond
    alignas(64) Sample buffer[4 * STRIP];
    alignas(64) Sample samples_of[SAMPLES][4 * STRIP];
};
