#include "effects/src/gaussian_blur.h"

#include "effects/src/kernels.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/AbortPanel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace {
constexpr double LEAST_DEVIATION = 0.2; // pixels; below it no neighbour gets a share that shows
constexpr double WIDEST_ON_GRID = 3.0;  // places; a wider Gaussian takes a coarser grid
constexpr double DEVIATIONS_SEEN = 3.0;

/// Places of the grid that are worked on from the top of the picture to its bottom at a time: the
/// rows under a Gaussian then stay in the cache.
constexpr int TILE = 128;

constexpr std::size_t SAMPLES = 4;

std::vector<float> make_weights(double deviation)
{
    const int reach = static_cast<int>(std::ceil(DEVIATIONS_SEEN * deviation));
    std::vector<double> exact;
    double sum = 0.0;
    for (int i = 0; i <= reach; ++i) {
        exact.push_back(std::exp(-0.5 * i * i / (deviation * deviation)));
        sum += (i == 0 ? 1.0 : 2.0) * exact.back();
    }
    std::vector<float> weights;
    for (const double weight : exact)
        weights.push_back(static_cast<float>(weight / sum));
    return weights;
}

/// In places: of sharing pixels out to two places, and of the curve.
double find_variance_of_grid(int factor)
{
    constexpr double OF_SHARING = 1.0 / 6.0;
    constexpr double OF_CURVE = 1.0 / 4.0;
    return OF_SHARING + OF_CURVE + 1.0 / (12.0 * factor * factor);
}

/// The quadratic B-spline.
std::vector<float> make_curve(int factor)
{
    std::vector<float> curve;
    for (int step = 0; step < factor; ++step) {
        const double x = (step + 0.5) / factor; // from side to side of the place
        curve.push_back(static_cast<float>(0.5 * (1.0 - x) * (1.0 - x)));
        curve.push_back(static_cast<float>(0.5 + x * (1.0 - x)));
        curve.push_back(static_cast<float>(0.5 * x * x));
    }
    return curve;
}

std::size_t samples_of(int pixels)
{
    return SAMPLES * static_cast<std::size_t>(pixels);
}

/// Room for a row of pixels that is worked on in whole steps.
std::size_t room_for(int pixels)
{
    return (samples_of(pixels) + BLUR_STEP - 1) / BLUR_STEP * BLUR_STEP;
}

bool is_clear(const unsigned char* row, std::size_t bytes)
{
    return row[0] == 0 && std::memcmp(row, row + 1, bytes - 1) == 0;
}

void add(const BlurKernels& kernels, float* sums, const std::uint8_t* samples, std::size_t count)
{
    kernels.add_8(sums, samples, count);
}

void add(const BlurKernels& kernels, float* sums, const std::uint16_t* samples, std::size_t count)
{
    kernels.add_16(sums, samples, count);
}

void round_to(const BlurKernels& kernels, std::uint8_t* out, const float* in, std::size_t count)
{
    kernels.round_8(out, in, count);
}

void round_to(const BlurKernels& kernels, std::uint16_t* out, const float* in, std::size_t count)
{
    kernels.round_16(out, in, count);
}

/// Places that the curve through a pixel needs on either side of its own.
int inq_margin(const BlurAxis& axis)
{
    return axis.inq_factor() > 1 ? 1 : 0;
}

/// Columns of the target from top to bottom. Rows of the source come in, are brought to the grid,
/// softened across and kept as long as a Gaussian down the columns reaches them.
template <class Sample> class Columns {
public:
    Columns(KIVPixmap& target, const KIVPixmap& source, const IntVector2& place,
            const BlurAxis& across, const BlurAxis& down, int begin, int end)
        : target(target), source(source), left(static_cast<int>(place.x())),
          top(static_cast<int>(place.y())), across(across), down(down), begin(begin), end(end),
          first(across.find_place(begin + left) - inq_margin(across)),
          n_places(across.find_place(end - 1 + left) + inq_margin(across) + 1 - first),
          n_wide(n_places + 2 * across.inq_reach()), row_room(room_for(n_places)),
          n_kept(2 * down.inq_reach() + 1), across_weights(across.inq_weights()),
          pixels(room_for((n_wide + 1) * across.inq_factor()) + BLUR_STEP), line(wide_room()),
          band(wide_room()), next_band(wide_room()),
          kept(row_room * static_cast<std::size_t>(n_kept)), mixed(row_room),
          finished(room_for(end - begin)),
          next_row(down.find_place(top) - inq_margin(down) - down.inq_reach()),
          last_painted(next_row - 1)
    {
        const auto shared = static_cast<float>(across.inq_factor() * down.inq_factor());
        for (float& weight : across_weights)
            weight /= shared; // of sums the mean
        for (Softened& row : softened)
            row.samples.resize(row_room);
        rows.resize(static_cast<std::size_t>(2 * std::max(across.inq_reach(), down.inq_reach())) +
                    1);
    }

    void draw()
    {
        if (down.inq_factor() > 1)
            sum_band(next_row - 1); // for what it leaves to the next one
        for (int y = 0; y < target.inq_height(); ++y)
            draw_row(y);
    }

private:
    /// A row of the grid after both ways.
    struct Softened {
        std::vector<float> samples;
        int row = 0;
        bool is_there = false;
        bool is_clear = false;
    };

    std::size_t wide_room() const { return room_for(n_wide) + BLUR_STEP; }

    void draw_row(int y)
    {
        auto* out = reinterpret_cast<Sample*>(target.inq_row(y)) + samples_of(begin);
        const float* in = down.inq_factor() > 1 ? mix_row(y + top) : find_softened(y + top);
        if (!in) {
            std::memset(out, 0, samples_of(end - begin) * sizeof(Sample));
            return;
        }
        if (across.inq_factor() > 1) {
            kernels.spread(finished.data(), in, across.inq_curve().data(), across.inq_factor(),
                           across.find_step(begin + left), static_cast<std::size_t>(end - begin));
            in = finished.data();
        }
        round_to(kernels, out, in, samples_of(end - begin));
    }

    /// A line of pixels on the curve through the rows of the grid. Null if it is clear.
    const float* mix_row(int pixel)
    {
        const int row = down.find_place(pixel);
        const Softened* const three[] = {&soften(row - 1), &soften(row), &soften(row + 1)};
        if (three[0]->is_clear && three[1]->is_clear && three[2]->is_clear)
            return nullptr;
        const float* const in[] = {three[0]->samples.data(), three[1]->samples.data(),
                                   three[2]->samples.data()};
        kernels.mix(mixed.data(), in, down.inq_curve().data() + 3 * down.find_step(pixel),
                    samples_of(n_places));
        return mixed.data();
    }

    const float* find_softened(int row)
    {
        const Softened& softened_row = soften(row);
        return softened_row.is_clear ? nullptr : softened_row.samples.data();
    }

    /// Rows are asked for from the top down, and the last three of them again.
    const Softened& soften(int row)
    {
        Softened& wanted = softened[row & 3];
        if (wanted.is_there && wanted.row == row)
            return wanted;
        const int reach = down.inq_reach();
        while (next_row <= row + reach)
            bring_row(next_row++);
        wanted.row = row;
        wanted.is_there = true;
        wanted.is_clear = last_painted < row - reach;
        if (wanted.is_clear) {
            std::fill(wanted.samples.begin(), wanted.samples.end(), 0.0F);
            return wanted;
        }
        rows[0] = find_kept(row);
        for (int i = 1; i <= reach; ++i)
            set_pair(i, find_kept(row - i), find_kept(row + i));
        kernels.weigh(wanted.samples.data(), rows.data(), down.inq_weights().data(), reach,
                      samples_of(n_places));
        return wanted;
    }

    /// Brings a row of the grid in, softened across.
    void bring_row(int row)
    {
        float* const out = find_kept(row);
        const float* in = down.inq_factor() > 1 ? sum_band(row) : gather_line(row);
        if (!in) {
            std::fill_n(out, row_room, 0.0F);
            return;
        }
        last_painted = row;
        const int reach = across.inq_reach();
        rows[0] = in + samples_of(reach);
        for (int i = 1; i <= reach; ++i)
            set_pair(i, in + samples_of(reach - i), in + samples_of(reach + i));
        kernels.weigh(out, rows.data(), across_weights.data(), reach, samples_of(n_places));
    }

    /// All that falls to a row of the grid; the lines between it and the next one are shared out.
    /// Null if there is nothing. Rows come one after the other.
    const float* sum_band(int row)
    {
        band.swap(next_band);
        bool is_painted = std::exchange(is_next_painted, false);
        std::fill(next_band.begin(), next_band.end(), 0.0F);
        for (int step = 0; step < down.inq_factor(); ++step) {
            const float* in = gather_line(down.find_first_behind(row) + step);
            if (!in)
                continue;
            is_painted = is_next_painted = true;
            kernels.divide(band.data(), next_band.data(), in, down.inq_share_behind(step),
                           samples_of(n_wide));
        }
        return is_painted ? band.data() : nullptr;
    }

    /// A line of the source on the grid across. Null if there is nothing.
    const float* gather_line(int y)
    {
        const int factor = across.inq_factor();
        const int from = factor > 1 ? across.find_first_behind(first - across.inq_reach() - 1)
                                    : first - across.inq_reach();
        const int width = factor > 1 ? (n_wide + 1) * factor : n_wide;
        const int begin_column = std::max(from, 0);
        const int end_column = std::min(from + width, source.inq_width());
        if (begin_column >= end_column || y < 0 || y >= source.inq_height())
            return nullptr;
        const std::size_t count = samples_of(end_column - begin_column);
        const auto* samples =
            reinterpret_cast<const Sample*>(source.inq_row(y)) + samples_of(begin_column);
        if (is_clear(reinterpret_cast<const unsigned char*>(samples), count * sizeof(Sample)))
            return nullptr;
        std::fill(pixels.begin(), pixels.end(), 0.0F);
        add(kernels, pixels.data() + samples_of(begin_column - from), samples, count);
        if (factor == 1)
            return pixels.data();
        kernels.gather(line.data(), pixels.data(), factor, static_cast<std::size_t>(n_wide));
        return line.data();
    }

    float* find_kept(int row)
    {
        const int place = (row % n_kept + n_kept) % n_kept;
        return kept.data() + row_room * static_cast<std::size_t>(place);
    }

    void set_pair(int i, const float* before, const float* behind)
    {
        rows[static_cast<std::size_t>(2 * i - 1)] = before;
        rows[static_cast<std::size_t>(2 * i)] = behind;
    }

    const BlurKernels& kernels = inq_blur_kernels();
    KIVPixmap& target;
    const KIVPixmap& source;
    int left; // of the target in the source
    int top;
    const BlurAxis& across;
    const BlurAxis& down;
    int begin; // columns of the target
    int end;
    int first; // places of the grid across
    int n_places;
    int n_wide; // with those that weigh in
    std::size_t row_room;
    int n_kept;
    std::vector<float> across_weights;
    std::vector<float> pixels;    // a line of the source
    std::vector<float> line;      // the same on the grid
    std::vector<float> band;      // a row of the grid before it is softened
    std::vector<float> next_band; // what the next one has of it already
    bool is_next_painted = false;
    std::vector<float> kept; // rows of the grid, softened across
    std::vector<float> mixed;
    std::vector<float> finished;
    std::vector<const float*> rows;
    Softened softened[4]; // by the low bits of their rows
    int next_row;         // to be brought in
    int last_painted;     // of those that came in
};

template <class Sample>
void blur(KIVPixmap& target, const KIVPixmap& source, const IntVector2& place,
          const BlurAxis& across, const BlurAxis& down, AbortPanel* abort)
{
    const int step = TILE * across.inq_factor();
    for (int begin = 0; begin < target.inq_width(); begin += step) {
        if (abort && abort->inq_abort())
            return;
        const int end = std::min(begin + step, target.inq_width());
        Columns<Sample>(target, source, place, across, down, begin, end).draw();
    }
}
} // namespace

BlurAxis::BlurAxis(double deviation)
{
    if (!(deviation >= LEAST_DEVIATION))
        return;
    double on_grid = std::min(deviation, MOST_DEVIATION);
    while (on_grid >= WIDEST_ON_GRID) {
        on_grid /= 2.0;
        ++shift;
    }
    if (shift > 0) {
        on_grid = std::sqrt(on_grid * on_grid - find_variance_of_grid(inq_factor()));
        curve = make_curve(inq_factor());
    }
    weights = make_weights(on_grid);
}

int BlurAxis::inq_border() const
{
    return shift == 0 ? inq_reach() : (inq_reach() + 2) * inq_factor() + inq_factor() / 2;
}

void blur_gaussian(KIVPixmap& target, const KIVPixmap& source, const IntVector2& place,
                   const BlurAxis& across, const BlurAxis& down, AbortPanel* abort)
{
    if (source.inq_bits_per_sample() == 8)
        blur<std::uint8_t>(target, source, place, across, down, abort);
    else
        blur<std::uint16_t>(target, source, place, across, down, abort);
}
