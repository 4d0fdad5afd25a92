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

/// Each row from the rows and columns that it stands for, in their shares.
template <class Sample> class WeighedRows : public RowMaker {
public:
    WeighedRows(int source_width, int source_height, int width, int height)
        : RowMaker(source_height, height), source_width(source_width), width(width),
          across(make_taps<Sample>(source_width, width)),
          down(make_taps<Sample>(source_height, height)),
          mixed(4 * static_cast<std::size_t>(source_width + TAPS - 1))
    {}

    void make_row(unsigned char* out, const unsigned char* const* rows, int y) override
    {
        const Kernels<Sample>& kernels = inq_kernels<Sample>();
        const Taps<Sample>& taps = down[static_cast<std::size_t>(y)];
        const Sample* samples[TAPS] = {};
        for (int k = 0; k < inq_count(); ++k)
            samples[k] = reinterpret_cast<const Sample*>(rows[k]);
        if (kernels.weigh_rows(mixed.data(), samples, taps.shares, inq_count(), source_width))
            kernels.weigh_columns(reinterpret_cast<Sample*>(out), mixed.data(), across.data(),
                                  width);
        else
            std::memset(out, 0, sizeof(Sample) * 4 * static_cast<std::size_t>(width));
    }

private:
    const int source_width;
    const int width;
    const std::vector<Taps<Sample>> across;
    const std::vector<Taps<Sample>> down;
    std::vector<Mixed<Sample>> mixed;
};

/// Each row the mean of two, which is quicker.
template <class Sample> class HalvedRows : public RowMaker {
public:
    HalvedRows(int width, int height) : RowMaker(2 * height, height), width(width) {}

    void make_row(unsigned char* out, const unsigned char* const* rows, int /*y*/) override
    {
        inq_kernels<Sample>().halve(reinterpret_cast<Sample*>(out),
                                    reinterpret_cast<const Sample*>(rows[0]),
                                    reinterpret_cast<const Sample*>(rows[1]), width);
    }

private:
    const int width;
};

template <class Sample>
std::unique_ptr<RowMaker> make_maker(int source_width, int source_height, int width, int height)
{
    if (2 * width == source_width && 2 * height == source_height)
        return std::make_unique<HalvedRows<Sample>>(width, height);
    return std::make_unique<WeighedRows<Sample>>(source_width, source_height, width, height);
}

std::unique_ptr<RowMaker> make_maker(int bits, int source_width, int source_height, int width,
                                     int height)
{
    return bits == 8 ? make_maker<std::uint8_t>(source_width, source_height, width, height)
                     : make_maker<std::uint16_t>(source_width, source_height, width, height);
}

std::size_t count_row_bytes(int width, int bits)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(bits / 2);
}
} // namespace

GrowingCopy::GrowingCopy(const KIVPixmap& source, bool halve_width, bool halve_height)
    : source(source)
{
    const int width = halve_width ? half_of(source.inq_width()) : source.inq_width();
    const int height = halve_height ? half_of(source.inq_height()) : source.inq_height();
    copy.reset(new (std::nothrow) KIVPixmap(width, height, source.inq_type(), nullptr, false));
    if (copy && copy->inq_is_empty())
        copy.reset();
    if (copy)
        maker = make_maker(source.inq_bits_per_sample(), source.inq_width(), source.inq_height(),
                           width, height);
}

int GrowingCopy::make_rows(int source_rows)
{
    const unsigned char* rows[TAPS];
    const int count = maker->inq_count();
    for (; made < copy->inq_height() && maker->inq_first(made) + count <= source_rows; ++made) {
        for (int k = 0; k < count; ++k)
            rows[k] = source.inq_row(maker->inq_first(made) + k);
        maker->make_row(copy->inq_row(made), rows, made);
    }
    return made;
}

std::unique_ptr<KIVPixmap> make_reduced(const KIVPixmap& source, bool halve_width,
                                        bool halve_height)
{
    GrowingCopy copy(source, halve_width, halve_height);
    if (copy.inq_copy())
        copy.make_rows(source.inq_height());
    return copy.take_copy();
}

RowReducer::RowReducer(int source_width, int source_height, int bits)
    : width(half_of(source_width)), height(half_of(source_height)),
      row_bytes(count_row_bytes(source_width, bits)),
      maker(make_maker(bits, source_width, source_height, width, height)),
      last_rows(TAPS, std::vector<unsigned char>(row_bytes)), made(count_row_bytes(width, bits))
{}

const unsigned char* RowReducer::take_row(const void* row)
{
    std::memcpy(last_rows[static_cast<std::size_t>(taken++ % TAPS)].data(), row, row_bytes);
    const int first = maker->inq_first(given);
    if (given == height || taken < first + maker->inq_count())
        return nullptr;
    const unsigned char* rows[TAPS];
    for (int k = 0; k < maker->inq_count(); ++k)
        rows[k] = last_rows[static_cast<std::size_t>((first + k) % TAPS)].data();
    maker->make_row(made.data(), rows, given++);
    return made.data();
}
