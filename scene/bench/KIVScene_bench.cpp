#include "scene/bench/cereal_scene.h"
#include "scene/bench/large_sheet.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <malloc.h>
#include <string>
#include <vector>

// A sheet with 500 numeric keys a column, saved and loaded whole, turn by turn with cereal, which
// stores objects of the same fields. Both write to memory, where a sync costs next to nothing, and
// both times are of the processor: from the objects to the closed file and back. Taking the loaded
// scene apart again is not measured.

namespace {
constexpr int KEYS = 500;

/// A folder in memory where the system has one.
class Folder {
public:
    Folder()
    {
        const std::filesystem::path memory = "/dev/shm";
        const bool has_memory = std::filesystem::is_directory(memory);
        path = (has_memory ? memory : std::filesystem::temp_directory_path()) / "montaray.XXXXXX";
        std::string name = path.string();
        path = ::mkdtemp(name.data());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code error;
        std::filesystem::current_path("/", error); // a scene makes its folder the working folder
        std::filesystem::remove_all(path, error);
    }

    std::string operator/(const char* name) const { return (path / name).string(); }

private:
    std::filesystem::path path;
};

gsl::owner<Column*> make_column(int seed)
{
    auto* column = new Column;
    column->init_after_construction();
    auto* numbers = new NumericSubColumn;
    numbers->init_after_construction();
    column->add_sub_column(numbers, nullptr);
    for (int i = 0; i < KEYS; ++i) {
        KeyCell* key = numbers->create_new_key();
        key->set_data(key->create_data());
        numbers->insert_key(key, large_sheet::frame(i));
        static_cast<BaseNumericCellData*>(key->inq_data())
            ->set_element(0, large_sheet::value(seed, i));
    }
    return column;
}

std::unique_ptr<KIVScene> make_scene(int columns)
{
    std::unique_ptr<KIVScene> scene(KIVScene::inq_unsetup_scene());
    scene->inq_xsheet()->set_length(large_sheet::FRAMES_BETWEEN_KEYS * KEYS);
    for (int i = 0; i < columns; ++i)
        scene->inq_xsheet()->add_column(make_column(i), nullptr);
    return scene;
}

bool save(KIVScene& scene, const std::string& path)
{
    return scene.save_to_file(path, true, true, false);
}

std::unique_ptr<KIVScene> load(const std::string& path)
{
    return std::unique_ptr<KIVScene>(KIVScene::load_from_file(path, nullptr, false));
}

/// Seconds of the processor that `work` takes. What others left for the allocator to tidy up is
/// tidied before.
template <class Work> double time_of(const Work& work)
{
    const auto now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        constexpr double NANO = 1e-9;
        return double(time.tv_sec) + NANO * double(time.tv_nsec);
    };
    ::malloc_trim(0);
    const double start = now();
    work();
    return now() - start;
}

/// The times of ours and cereal's turns, of which the middle ones count.
class Comparison {
public:
    void add(double our_seconds, double cereal_seconds)
    {
        ours.push_back(our_seconds);
        cereals.push_back(cereal_seconds);
    }

    void report(benchmark::State& state)
    {
        constexpr double MILLI = 1e3;
        state.counters["ours_ms"] = MILLI * middle(ours);
        state.counters["cereal_ms"] = MILLI * middle(cereals);
        state.counters["ratio"] = middle(ours) / middle(cereals);
    }

private:
    static double middle(std::vector<double>& times)
    {
        std::ranges::sort(times);
        return times[times.size() / 2];
    }

    std::vector<double> ours, cereals;
};

void save(benchmark::State& state)
{
    const int columns = static_cast<int>(state.range(0)) / KEYS;
    const Folder folder;
    const std::unique_ptr<KIVScene> scene = make_scene(columns);
    const CerealScene cereal_scene(columns, KEYS);
    Comparison comparison;
    for (auto _ : state) {
        const double ours = time_of([&] {
            if (!save(*scene, folder / "scene"))
                state.SkipWithError("not saved");
        });
        comparison.add(ours, time_of([&] { cereal_scene.save(folder / "cereal"); }));
        state.SetIterationTime(ours);
    }
    comparison.report(state);
    const auto bytes_a_key = [&](const char* file) {
        return double(std::filesystem::file_size(folder / file)) / double(state.range(0));
    };
    state.counters["bytes_a_key"] = bytes_a_key("scene/XSheet");
    state.counters["cereal_bytes_a_key"] = bytes_a_key("cereal");
}

void load(benchmark::State& state)
{
    const int columns = static_cast<int>(state.range(0)) / KEYS;
    const Folder folder;
    save(*make_scene(columns), folder / "scene");
    CerealScene(columns, KEYS).save(folder / "cereal");
    Comparison comparison;
    for (auto _ : state) {
        std::unique_ptr<KIVScene> scene;
        const double ours = time_of([&] { scene = load(folder / "scene"); });
        if (!scene || scene->inq_xsheet()->inq_sub_column_list()->count() != columns)
            state.SkipWithError("not loaded");
        scene.reset();
        std::unique_ptr<CerealScene> cereal_scene;
        comparison.add(ours, time_of([&] {
                           cereal_scene = std::make_unique<CerealScene>(folder / "cereal");
                       }));
        if (cereal_scene->count_keys() != columns * KEYS)
            state.SkipWithError("cereal has not loaded");
        state.SetIterationTime(ours);
    }
    comparison.report(state);
}

constexpr int TURNS = 9;

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgName("keys")->Arg(100'000)->Arg(1'000'000)->Iterations(TURNS);
    benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}
} // namespace

BENCHMARK(save)->Apply(sizes);
BENCHMARK(load)->Apply(sizes);
