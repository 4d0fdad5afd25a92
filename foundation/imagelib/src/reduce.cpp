#include "imagelib/src/reduce.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/src/kernels.h"

namespace {
/// The source pixels under each reduced pixel along one side. An even side has two whole pixels to
/// each; an odd one parts its pixels among the neighbours.
template <class Sample> std::vector<Taps<Sample>> make_taps(int size, int reduced)
{
    std::vector<Taps<Sample>> taps;
    taps.reserve(static_cast<std::size_t>(reduced));
    const double step = static_cast<double>(size) / reduced;
    for (int i = 0; i < reduced; ++i) {
        const int first = static_cast<int>(std::int64_t{i} * size / reduced);
        float shares[TAPS] = {};
        for (int k = 0; k < TAPS; ++k) {
            const double from = std::max(step * i, static_cast<double>(first + k));
            const double to = std::min(step * (i + 1), static_cast<double>(first + k + 1));
            shares[k] = static_cast<float>(std::max(0.0, to - from) / step);
        }
        taps.emplace_back(first, shares);
    }
    return taps;
}

/// As many rows as a reduced one is made of, and have a share.
int count_rows(int size, int reduced)
{
    return (size + reduced - 1) / reduced;
}

template <class Sample> void reduce(KIVPixmap& out, const KIVPixmap& source)
{
    const Kernels<Sample>& kernels = inq_kernels<Sample>();
    const auto across = make_taps<Sample>(source.inq_width(), out.inq_width());
    const auto down = make_taps<Sample>(source.inq_height(), out.inq_height());
    const int row_count = count_rows(source.inq_height(), out.inq_height());
    const auto columns = static_cast<std::size_t>(source.inq_width() + TAPS - 1);
    std::vector<Mixed<Sample>> mixed(4 * columns);
    for (int y = 0; y < out.inq_height(); ++y) {
        const Taps<Sample>& taps = down[static_cast<std::size_t>(y)];
        const Sample* rows[TAPS];
        for (int k = 0; k < row_count; ++k)
            rows[k] = reinterpret_cast<const Sample*>(source.inq_row(taps.first + k));
        auto* row = reinterpret_cast<Sample*>(out.inq_row(y));
        if (kernels.weigh_rows(mixed.data(), rows, taps.shares, row_count, source.inq_width()))
            kernels.weigh_columns(row, mixed.data(), across.data(), out.inq_width());
        else
            std::memset(row, 0, sizeof(Sample) * 4 * static_cast<std::size_t>(out.inq_width()));
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
