#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <gsl/gsl_interp.h>
#include <malloc.h>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

namespace {
constexpr int COLUMNS = 2000;
constexpr int KEYS = 50;
constexpr int FRAMES = 1000;

/// One scene's worth of columns of one element, with a key on every twentieth frame.
struct Columns {
    Columns()
    {
        for (int c = 0; c < COLUMNS; ++c)
            columns.push_back(make_column(c));
        std::iota(frames.begin(), frames.end(), 1);
    }

    static std::unique_ptr<NumericSubColumn> make_column(int seed)
    {
        auto column = std::make_unique<NumericSubColumn>(1);
        for (int k = 0; k < KEYS; ++k) {
            KeyCell* key = column->make_key(1 + k * (FRAMES / KEYS));
            static_cast<BaseNumericCellData*>(key->inq_data())->set_element(0, seed + k);
        }
        return column;
    }

    void shuffle() { std::shuffle(frames.begin(), frames.end(), std::mt19937(1)); }

    void clear()
    {
        for (const auto& column : columns)
            column->clear_all_inbetweens();
    }

    double read()
    {
        double sum = 0.0;
        for (const int frame : frames)
            for (const auto& column : columns)
                sum += column->inq_element(0, frame);
        return sum;
    }

    std::vector<std::unique_ptr<NumericSubColumn>> columns;
    std::vector<int> frames = std::vector<int>(FRAMES);
};

/// The same values by GSL's straight interpolation, with an accelerator for each channel.
struct Channels {
    Channels()
    {
        for (int c = 0; c < COLUMNS; ++c)
            channels.push_back(std::make_unique<Channel>(c));
        std::iota(frames.begin(), frames.end(), 1);
    }

    void shuffle() { std::shuffle(frames.begin(), frames.end(), std::mt19937(1)); }

    double read()
    {
        double sum = 0.0;
        for (const int frame : frames)
            for (const auto& channel : channels)
                sum += channel->read(frame);
        return sum;
    }

    struct Channel {
        explicit Channel(int seed)
        {
            for (int k = 0; k < KEYS; ++k) {
                x[k] = 1 + k * (FRAMES / KEYS);
                y[k] = seed + k;
            }
            gsl_interp_init(interpolation, x, y, KEYS);
        }
        Channel(const Channel&) = delete;
        Channel& operator=(const Channel&) = delete;
        ~Channel()
        {
            gsl_interp_free(interpolation);
            gsl_interp_accel_free(place);
        }

        double read(int frame) const
        {
            return gsl_interp_eval(interpolation, x, y, std::min<double>(frame, x[KEYS - 1]),
                                   place);
        }

        double x[KEYS];
        double y[KEYS];
        gsl_interp* interpolation = gsl_interp_alloc(gsl_interp_linear, KEYS);
        gsl_interp_accel* place = gsl_interp_accel_alloc();
    };

    std::vector<std::unique_ptr<Channel>> channels;
    std::vector<int> frames = std::vector<int>(FRAMES);
};

enum class Order { SEQUENTIAL, RANDOM };

void read_gsl(benchmark::State& state, Order order)
{
    Channels channels;
    if (order == Order::RANDOM)
        channels.shuffle();
    for (auto _ : state)
        benchmark::DoNotOptimize(channels.read());
    state.counters["values"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * COLUMNS * FRAMES, benchmark::Counter::kIsRate);
}

void gsl_in_order(benchmark::State& state)
{
    read_gsl(state, Order::SEQUENTIAL);
}
void gsl_at_random(benchmark::State& state)
{
    read_gsl(state, Order::RANDOM);
}
BENCHMARK(gsl_in_order)->Unit(benchmark::kMillisecond);
BENCHMARK(gsl_at_random)->Unit(benchmark::kMillisecond);

void read_all(benchmark::State& state, Order order, bool is_first_read)
{
    Columns columns;
    if (order == Order::RANDOM)
        columns.shuffle();
    columns.read();
    std::size_t bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        if (is_first_read)
            columns.clear();
        const std::size_t before = ::mallinfo2().uordblks;
        state.ResumeTiming();
        benchmark::DoNotOptimize(columns.read());
        state.PauseTiming();
        bytes += ::mallinfo2().uordblks - before;
        state.ResumeTiming();
    }
    const auto values = static_cast<double>(state.iterations()) * COLUMNS * FRAMES;
    state.counters["values"] = benchmark::Counter(values, benchmark::Counter::kIsRate);
    state.counters["new_bytes_per_value"] = static_cast<double>(bytes) / values;
}

void first_read_in_order(benchmark::State& state)
{
    read_all(state, Order::SEQUENTIAL, true);
}
void first_read_at_random(benchmark::State& state)
{
    read_all(state, Order::RANDOM, true);
}
void read_again_in_order(benchmark::State& state)
{
    read_all(state, Order::SEQUENTIAL, false);
}
void read_again_at_random(benchmark::State& state)
{
    read_all(state, Order::RANDOM, false);
}

BENCHMARK(first_read_in_order)->Unit(benchmark::kMillisecond);
BENCHMARK(first_read_at_random)->Unit(benchmark::kMillisecond);
BENCHMARK(read_again_in_order)->Unit(benchmark::kMillisecond);
BENCHMARK(read_again_at_random)->Unit(benchmark::kMillisecond);
} // namespace
