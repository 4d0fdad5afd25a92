#include "imagelib/src/reduce.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/kernels.h"

namespace {
/// The source pixels under one reduced pixel, along one side: up to three, with their shares.
struct Reach {
    int first;
    int count;
    float shares[3];
};

/// An even side has two whole pixels to each; an odd one parts its pixels among the neighbours.
std::vector<Reach> make_reaches(int size, int reduced)
{
    std::vector<Reach> reaches(static_cast<std::size_t>(reduced));
    const float whole = static_cast<float>(reduced) / static_cast<float>(size);
    for (int i = 0; i < reduced; ++i) {
        Reach& reach = reaches[static_cast<std::size_t>(i)];
        reach.first = static_cast<int>(std::int64_t{i} * size / reduced);
        const double start = static_cast<double>(i) * size / reduced;
        const double end = static_cast<double>(i + 1) * size / reduced;
        const int last = std::min(size, static_cast<int>(std::ceil(end - 1e-9)));
        reach.count = std::min(3, last - reach.first);
        for (int k = 0; k < reach.count; ++k) {
            const double from = std::max(start, static_cast<double>(reach.first + k));
            const double to = std::min(end, static_cast<double>(reach.first + k + 1));
            reach.shares[k] = whole * static_cast<float>(std::max(0.0, to - from));
        }
    }
    return reaches;
}

template <class Sample>
void reduce_pixel(Sample* out, const KIVPixmap& source, const Reach& across, const Reach& down)
{
    float sums[4] = {};
    for (int j = 0; j < down.count; ++j) {
        const Sample* pixel = reinterpret_cast<const Sample*>(source.inq_row(down.first + j)) +
                              std::ptrdiff_t{4} * across.first;
        for (int i = 0; i < across.count; ++i, pixel += 4)
            for (int c = 0; c < 4; ++c)
                sums[c] += pixel[c] * across.shares[i] * down.shares[j];
    }
    for (int c = 0; c < 4; ++c)
        out[c] = static_cast<Sample>(sums[c] + 0.5F);
}

template <class Sample> void reduce(KIVPixmap& out, const KIVPixmap& source)
{
    const std::vector<Reach> across = make_reaches(source.inq_width(), out.inq_width());
    const std::vector<Reach> down = make_reaches(source.inq_height(), out.inq_height());
    for (int y = 0; y < out.inq_height(); ++y) {
        auto* row = reinterpret_cast<Sample*>(out.inq_row(y));
        for (int x = 0; x < out.inq_width(); ++x)
            reduce_pixel(row + std::ptrdiff_t{4} * x, source, across[static_cast<std::size_t>(x)],
                         down[static_cast<std::size_t>(y)]);
    }
}

template <class Sample> void reduce_by_two(KIVPixmap& out, const KIVPixmap& source)
{
    const Kernels<Sample>& kernels = inq_kernels<Sample>();
    for (int y = 0; y < out.inq_height(); ++y)
        kernels.halve(reinterpret_cast<Sample*>(out.inq_row(y)),
                      reinterpret_cast<const Sample*>(source.inq_row(2 * y)),
                      reinterpret_cast<const Sample*>(source.inq_row(2 * y + 1)), out.inq_width());
}
} // namespace

std::unique_ptr<KIVPixmap> make_reduced(const KIVPixmap& source, bool halve_width,
                                        bool halve_height)
{
    const int width = halve_width ? std::max(1, source.inq_width() / 2) : source.inq_width();
    const int height = halve_height ? std::max(1, source.inq_height() / 2) : source.inq_height();
    std::unique_ptr<KIVPixmap> out(new (std::nothrow)
                                       KIVPixmap(width, height, source.inq_type(), nullptr, false));
    if (!out || !out->inq_data())
        return nullptr;
    const bool is_even = 2 * width == source.inq_width() && 2 * height == source.inq_height();
    const bool is_8 = source.inq_bits_per_sample() == 8;
    if (is_even)
        is_8 ? reduce_by_two<std::uint8_t>(*out, source)
             : reduce_by_two<std::uint16_t>(*out, source);
    else
        is_8 ? reduce<std::uint8_t>(*out, source) : reduce<std::uint16_t>(*out, source);
    return out;
}
