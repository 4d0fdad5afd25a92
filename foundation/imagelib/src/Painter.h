#pragma once

#include "imagelib/src/FixedPixels.h"
#include "imagelib/src/Layer.h"
#include "imagelib/src/samples.h"

#include <cstring>
#include <limits>
#include <vector>

/// One filtered sample a pixel leaves out too much of the image below this scale.
constexpr double SAMPLE_FOUR_BELOW = 0.8;

/// A pixel as an edge meets it that rises by these shares of a pixel to the next column and row.
struct EdgeWay {
    double along; // the greater of the two
    double other;

    EdgeWay(double across, double down)
        : along(std::max(std::abs(across), std::abs(down))),
          other(std::min(std::abs(across), std::abs(down)))
    {}

    /// From the pixel's centre to where an edge leaves it.
    double reach() const { return 0.5 * (along + other); }

    /// How much of the pixel lies on this side of an edge `distance` away, beyond one half.
    double cover_beyond_half(double distance) const
    {
        const double t = std::abs(distance);
        const double cover = t >= reach() ? 0.5
                             : t <= 0.5 * (along - other)
                                 ? t / along
                                 : 0.5 - (reach() - t) * (reach() - t) / (2.0 * along * other);
        return std::copysign(cover, distance);
    }

    /// How much of the pixel a band covers from `before` to `after` its centre.
    double cover_of_band(double before, double after) const
    {
        return std::max(0.0, cover_beyond_half(before) + cover_beyond_half(after));
    }
};

constexpr double ONE_PLACE = 4294967296.0; // of a walk: 1 << plain::ONE_SHIFT

inline std::int64_t to_walk(double value)
{
    return static_cast<std::int64_t>(
        std::floor(std::clamp(value, -FARTHEST, FARTHEST) * ONE_PLACE + 0.5));
}

/// A longer one leaves any source at once, and would leave 64 bits on the way.
constexpr double LONGEST_STEP = 1 << 21;

inline std::int64_t to_step(double value)
{
    return to_walk(std::clamp(value, -LONGEST_STEP, LONGEST_STEP));
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

/// A source with alpha that is drawn through a mapping. What a pixel gets does not depend on the
/// tile that it is drawn with.
template <class Sample> class Painter : public Layer {
public:
    Painter(const FixedPixels& source, const Mapping& mapping, const DrawOptions& options,
            Interval columns, Interval lines)
        : Layer(columns, lines), m(mapping), options(options), source(source),
          pixels(source.pixels), takes_four(options.filtered && std::max(m.u_length, m.v_length) >
                                                                    1.0 / SAMPLE_FOUR_BELOW + SAFE),
          is_level(std::abs(m.u_y) < LEVEL && std::abs(m.v_x) < LEVEL &&
                   std::abs(m.u_x) < MOST_LEVEL_STEP &&
                   (!takes_four || std::abs(m.v_y) < MOST_LEVEL_STEP)),
          is_exact(knows_places()), share(to_share(options.opacity))
    {}

    Effect look_at(const Tile& tile) override
    {
        Effect effect;
        for_each_block(tile, inq_blocks(tile), [&](const Tile& block, Blocks bit) {
            const Reach reach = reach_of(block);
            const BlockMap::Content content = inq_content(reach);
            if (content.is_empty)
                return;
            effect.drawn |= bit;
            if (content.is_opaque && is_within(reach) && is_around(block))
                effect.replaced |= bit;
        });
        return effect;
    }

    void draw(const Canvas& onto, const Tile& tile, Blocks chosen, Scratch& scratch) override
    {
        for_each_run(tile, chosen, [&](Tile run) {
            run.columns.cut(columns);
            run.lines.cut(lines);
            paint(onto, run, scratch);
        });
    }

    /// A turned walk hides the rows that it will want from the processor's own guess.
    void prefetch(const Tile& tile, Blocks chosen) const override
    {
        if (is_level)
            return;
        for_each_block(tile, chosen, [&](const Tile& block, Blocks) {
            const Reach reach = reach_of(block);
            Interval rows = {to_int(std::floor(reach.top)), to_int(std::ceil(reach.bottom))};
            Interval across = {to_int(std::floor(reach.left)), to_int(std::ceil(reach.right))};
            rows.cut({0, pixels.height});
            across.cut({0, pixels.width});
            prefetch_rows(rows, across);
        });
    }

    /// Any number of rows, strip by strip.
    void paint(const Canvas& onto, const Tile& area, Scratch& scratch)
    {
        strips = &scratch.inq_strips<Sample>();
        for (int x = area.columns.begin; x < area.columns.end; x = strip_begin(x) + TILE_WIDTH) {
            const Tile part = {{x, std::min(strip_begin(x) + TILE_WIDTH, area.columns.end)},
                               area.lines};
            const bool is_inner = !is_level && is_exact && is_within(reach_of(part));
            for_each_line(
                part.lines, [&](int y) { prefetch_line(onto, part.columns, y); },
                [&](int y) { paint_strip(onto, part.columns, y, is_inner); });
        }
    }

    const void* inq_pinned() const override { return source.memory.get(); }
    std::size_t inq_pinned_bytes() const override { return source.bytes; }

private:
    static constexpr int SAMPLES = Strips<Sample>::SAMPLES;

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
    static_assert(MOST_LEVEL_STEP * TILE_WIDTH + 2 * TAPS < Strips<Sample>::MOST_MIXED);

    /// What the rows of a source that lies level have in common, for a strip of the target.
    struct LevelStrip {
        bool is_known = false;
        Interval inner = {0, 0}; // pixels whose samples have all their neighbours
        int first_column = 0;    // of the source that any of them needs
        int columns[TILE_WIDTH]; // of the inner pixels, from the first
        std::uint32_t fractions[TILE_WIDTH];
        std::vector<Taps<Sample>> taps; // instead, of pixels with four samples
    };

    /// Places are then what they would have been, had it been drawn there in the first place.
    void move(int x, int y) override
    {
        m.u_0 -= m.u_x * x + m.u_y * y;
        m.v_0 -= m.v_x * x + m.v_y * y;
        is_exact = knows_places();
    }

    bool knows_places() const
    {
        return (std::abs(m.u_0) + std::abs(m.v_0) +
                (std::abs(m.u_x) + std::abs(m.v_x)) * columns.end +
                (std::abs(m.u_y) + std::abs(m.v_y)) * lines.end) *
                   std::numeric_limits<double>::epsilon() <
               0.01 * SAFE;
    }

    /// What part of the source the centres of some pixels come to lie in.
    struct Reach {
        double left;
        double right;
        double top;
        double bottom;
    };

    Reach reach_of(const Tile& part) const
    {
        const double du = m.u_x * (part.columns.size() - 1);
        const double dv = m.v_x * (part.columns.size() - 1);
        const double eu = m.u_y * (part.lines.size() - 1);
        const double ev = m.v_y * (part.lines.size() - 1);
        const double u = m.u_at(part.columns.begin, part.lines.begin);
        const double v = m.v_at(part.columns.begin, part.lines.begin);
        return {
            u + std::min(du, 0.0) + std::min(eu, 0.0), u + std::max(du, 0.0) + std::max(eu, 0.0),
            v + std::min(dv, 0.0) + std::min(ev, 0.0), v + std::max(dv, 0.0) + std::max(ev, 0.0)};
    }

    /// Of all pixels of the source that samples there are made of.
    BlockMap::Content inq_content(const Reach& reach) const
    {
        const double spread = options.filtered ? 1.5 : 0.5; // and a part of a pixel for safety
        const double beyond_u = spread + u_way.reach();
        const double beyond_v = spread + v_way.reach();
        const Interval across = {to_int(std::floor(reach.left - beyond_u)),
                                 to_int(std::ceil(reach.right + beyond_u)) + 1};
        const Interval down = {to_int(std::floor(reach.top - beyond_v)),
                               to_int(std::ceil(reach.bottom + beyond_v)) + 1};
        const bool misses = across.end <= 0 || across.begin >= pixels.width || down.end <= 0 ||
                            down.begin >= pixels.height;
        if (misses)
            return {true, false};
        if (!source.blocks)
            return {false, false};
        BlockMap::Content content = source.blocks->inq_content(across, down);
        content.is_opaque = content.is_opaque && share == WHOLE_SHARE && !weighs();
        return content;
    }

    /// Weighed taps of opaque pixels may come out a little less than opaque.
    bool weighs() const { return is_level && takes_four; }

    /// Whether all samples have all their neighbours, in pixels that are wholly covered.
    bool is_within(const Reach& reach) const
    {
        const double margin_u = find_margin(m.u_x, m.u_y);
        const double margin_v = find_margin(m.v_x, m.v_y);
        return is_exact && reach.left >= margin_u && reach.right <= m.width - margin_u &&
               reach.top >= margin_v && reach.bottom <= m.height - margin_v;
    }

    void prefetch_rows(Interval rows, Interval across) const
    {
        for (int y = rows.begin; y < rows.end; ++y)
            prefetch_source(across, y);
    }

    void prefetch_source(const Interval& across, int y) const
    {
        constexpr int BYTES = 4 * sizeof(Sample);
        const Sample* row = plain::pixel_at<Sample>(pixels, across.begin, y);
        prefetch_span(reinterpret_cast<const unsigned char*>(row),
                      std::ptrdiff_t{across.size()} * BYTES);
    }

    /// Of the target, and of a source that lies level.
    void prefetch_line(const Canvas& onto, const Interval& strip, int y) const
    {
        prefetch_span(onto.at(strip.begin, y), std::ptrdiff_t{strip.size()} * onto.bytes_per_pixel);
        if (!is_level)
            return;
        const Reach reach = reach_of({strip, {y, y + 1}});
        Interval across = {to_int(reach.left), to_int(reach.right)};
        across.cut({0, pixels.width});
        const int row = to_int(reach.bottom);
        if (row >= 0 && row < pixels.height)
            prefetch_source(across, row);
    }

    /// The strips of a row begin at the same places for every tile.
    static int strip_begin(int x)
    {
        static_assert(std::has_single_bit(unsigned{TILE_WIDTH}));
        return x & ~(TILE_WIDTH - 1);
    }

    LevelStrip& find_level_strip(int x)
    {
        const int first = strip_begin(columns.begin);
        if (level_strips.empty())
            level_strips.resize(
                static_cast<std::size_t>((columns.end - first + TILE_WIDTH - 1) / TILE_WIDTH));
        LevelStrip& strip = level_strips[static_cast<std::size_t>((x - first) / TILE_WIDTH)];
        if (!strip.is_known)
            find_columns(strip, {strip_begin(x), strip_begin(x) + TILE_WIDTH}, lines.begin);
        return strip;
    }

    void find_columns(LevelStrip& found, Interval strip, int y) const
    {
        found.is_known = true;
        found.inner = strip;
        found.inner.cut(columns);
        found.inner.cut(find_inner_columns(y));
        if (found.inner.size() == 0)
            return;
        if (takes_four)
            return find_taps(found, y);
        SourceWalk walk = make_walk(found.inner.begin, y);
        const std::int64_t last = walk.u + (found.inner.size() - 1) * walk.du;
        found.first_column = static_cast<int>(std::min(walk.u, last) >> plain::ONE_SHIFT);
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
        const std::int64_t one = make_walk(found.inner.begin, y, {-SPREAD, 0.0}).u;
        const std::int64_t other = make_walk(found.inner.begin, y, {SPREAD, 0.0}).u;
        const std::int64_t step = to_step(m.u_x);
        found.taps.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            found.taps.push_back(make_taps(one + i * step, other + i * step));
        found.first_column = std::min(found.taps.front().first, found.taps.back().first);
        for (Taps<Sample>& taps : found.taps)
            taps.first -= found.first_column;
    }

    /// Four samples to a pixel lie in two rows and two columns, which are weighed one after the
    /// other.
    void weigh_level(Sample* out, const LevelStrip& level, Interval inner, int y)
    {
        const std::int64_t one = make_walk(inner.begin, y, {0.0, -SPREAD}).v;
        const std::int64_t other = make_walk(inner.begin, y, {0.0, SPREAD}).v;
        const Taps<Sample> down = make_taps(one, other);
        const auto last = static_cast<int>(std::max(one, other) >> plain::ONE_SHIFT) + 1;
        const Taps<Sample>* taps = level.taps.data() + (inner.begin - level.inner.begin);
        const int count = inner.size();
        const int begin = std::min(taps[0].first, taps[count - 1].first);
        const int end = std::max(taps[0].first, taps[count - 1].first) + TAPS;
        const Sample* rows[TAPS] = {};
        for (int line = down.first; line <= last; ++line)
            rows[line - down.first] =
                plain::pixel_at<Sample>(pixels, level.first_column + begin, line);
        if (inq_kernels<Sample>().weigh_rows(
                strips->mixed + std::ptrdiff_t{4} * begin, rows, down.shares, last - down.first + 1,
                std::min(end, pixels.width - level.first_column) - begin))
            inq_kernels<Sample>().weigh_columns(out, strips->mixed, taps, count);
        else
            make_empty(out, count);
    }

    static void make_empty(Sample* out, int count)
    {
        std::memset(out, 0, sizeof(Sample) * 4 * static_cast<std::size_t>(count));
    }

    void sample_level(Sample* out, Interval inner, int y)
    {
        const LevelStrip& level = find_level_strip(inner.begin);
        if (takes_four)
            return weigh_level(out, level, inner, y);
        const SourceWalk walk = make_walk(inner.begin, y);
        const int line = static_cast<int>(walk.v >> plain::ONE_SHIFT);
        const int skipped = inner.begin - level.inner.begin;
        const Columns at = {level.columns + skipped, level.fractions + skipped};
        const int count = inner.size();
        const Kernels<Sample>& kernels = inq_kernels<Sample>();
        if (!options.filtered)
            return kernels.pick(out, plain::pixel_at<Sample>(pixels, level.first_column, line), at,
                                count);
        const int begin = std::min(at.columns[0], at.columns[count - 1]);
        const int end = std::max(at.columns[0], at.columns[count - 1]) + 2;
        const int first = level.first_column + begin;
        if (kernels.mix_rows(strips->mixed + std::ptrdiff_t{4} * begin,
                             plain::pixel_at<Sample>(pixels, first, line),
                             plain::pixel_at<Sample>(pixels, first, line + 1),
                             static_cast<std::uint32_t>(walk.v), end - begin))
            kernels.mix_columns(out, strips->mixed, at, count);
        else
            make_empty(out, count);
    }

    /// Where the samples of a pixel are taken, from its centre; in pixels of the target.
    Place offset_of(int sample) const
    {
        return takes_four ? Place{sample % 2 ? SPREAD : -SPREAD, sample / 2 ? SPREAD : -SPREAD}
                          : Place{0.0, 0.0};
    }

    /// Pixels of one row and one strip. `is_inner`: all of them have all that they need.
    void paint_strip(const Canvas& onto, Interval strip, int y, bool is_inner)
    {
        Interval inner = strip;
        if (!is_inner) {
            strip.cut(find_touched(y));
            if (strip.size() == 0)
                return;
            inner = strip;
            inner.cut(find_inner(y));
            if (inner.size() == 0)
                inner = {strip.end, strip.end};
            sample_edge({strip.begin, inner.begin}, y, strip.begin);
        }
        if (inner.size() > 0)
            sample_inner(strips->strip + std::ptrdiff_t{4} * (inner.begin - strip.begin), inner, y);
        if (!is_inner)
            sample_edge({inner.end, strip.end}, y, strip.begin);
        if (share != WHOLE_SHARE)
            dim(strips->strip, strip.size(), share);
        inq_kernels<Sample>().over(reinterpret_cast<Sample*>(onto.at(strip.begin, y)),
                                   strips->strip, strip.size());
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
        const double reach_u = u_way.reach();
        const double reach_v = v_way.reach();
        Interval touched = find_inside(m.u_at(0, y), m.u_x, -reach_u, m.width + reach_u);
        touched.cut(find_inside(m.v_at(0, y), m.v_x, -reach_v, m.height + reach_v));
        return touched;
    }

    /// How far from the edge the source's pixels must be taken, for samples with all their
    /// neighbours in pixels that are wholly covered.
    double find_margin(double step_x, double step_y) const
    {
        if (!options.filtered)
            return SAFE;
        const double spread = takes_four ? SPREAD : 0.0;
        const double need = 0.5 + spread * (std::abs(step_x) + std::abs(step_y));
        return std::max(need, EdgeWay(step_x, step_y).reach()) + SAFE;
    }

    Interval find_inner_columns(int y) const
    {
        const double margin = find_margin(m.u_x, m.u_y);
        return find_inside(m.u_at(0, y), m.u_x, margin, m.width - margin);
    }

    Interval find_inner(int y) const
    {
        if (!is_exact)
            return {0, 0};
        const double margin = find_margin(m.v_x, m.v_y);
        Interval inner = find_inner_columns(y);
        inner.cut(find_inside(m.v_at(0, y), m.v_x, margin, m.height - margin));
        return inner;
    }

    /// From a pixel on, or a part of a pixel beside its centre. Places are counted from the
    /// beginning of the pixel's strip, so that all walks over it meet the same; where a step is too
    /// long for that, there is just one pixel to a walk.
    SourceWalk make_walk(int x, int y, Place offset = {0.0, 0.0}) const
    {
        const double centre = options.filtered ? 0.5 : -TIE;
        const bool is_long = std::max(std::abs(m.u_x), std::abs(m.v_x)) > LONGEST_STEP;
        const int from = is_long ? x : strip_begin(x);
        const SourceWalk walk = {to_walk(m.u_at(from + offset.x, y + offset.y) - centre),
                                 to_walk(m.v_at(from + offset.x, y + offset.y) - centre),
                                 to_step(m.u_x), to_step(m.v_x)};
        return {walk.u + (x - from) * walk.du, walk.v + (x - from) * walk.dv, walk.du, walk.dv};
    }

    void sample_inner(Sample* out, Interval inner, int y)
    {
        const Kernels<Sample>& kernels = inq_kernels<Sample>();
        if (is_level)
            return sample_level(out, inner, y);
        if (!options.filtered)
            return kernels.sample_nearest(out, pixels, make_walk(inner.begin, y), inner.size());
        if (!takes_four)
            return kernels.sample_bilinear(out, pixels, make_walk(inner.begin, y), inner.size());
        const Sample* parts[SAMPLES];
        for (int i = 0; i < SAMPLES; ++i) {
            kernels.sample_bilinear(strips->samples_of[i], pixels,
                                    make_walk(inner.begin, y, offset_of(i)), inner.size());
            parts[i] = strips->samples_of[i];
        }
        kernels.average(out, parts, inner.size());
    }

    void sample_edge(Interval edge, int y, int first)
    {
        for (int x = edge.begin; x < edge.end; ++x) {
            Sample* out = strips->strip + std::ptrdiff_t{4} * (x - first);
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
            blend_clamped(four[i], make_walk(x, y, offset_of(i)));
            parts[i] = four[i];
        }
        plain::average(out, parts, 1);
    }

    /// The share of a pixel that the source covers.
    double cover_at(int x, int y) const
    {
        const double u = m.u_at(x, y);
        const double v = m.v_at(x, y);
        return u_way.cover_of_band(u, m.width - u) * v_way.cover_of_band(v, m.height - v);
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

    Mapping m;
    const EdgeWay u_way{m.u_x, m.u_y};
    const EdgeWay v_way{m.v_x, m.v_y};
    const DrawOptions options;
    const FixedPixels source;
    const SourcePixels pixels;
    const bool takes_four;
    const bool is_level;
    bool is_exact; // places are known well enough to go without looking at the edges
    const unsigned share;
    std::vector<LevelStrip> level_strips; // made when they are wanted
    Strips<Sample>* strips = nullptr;     // not owned; of the present drawing
};
