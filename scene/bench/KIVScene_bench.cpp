#include "scene/hdr/KIVScene.h"
#include "tests/support/TempFolder.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <benchmark/benchmark.h>

// A sheet of 1,000 columns with 200 keys each.

namespace {
constexpr int COLUMNS = 1000;
constexpr int KEYS = 200;
constexpr int FRAMES_BETWEEN_KEYS = 5;

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
        numbers->insert_key(key, 1 + FRAMES_BETWEEN_KEYS * i);
        static_cast<BaseNumericCellData*>(key->inq_data())->set_element(0, seed + i);
    }
    return column;
}

std::unique_ptr<KIVScene> make_scene()
{
    std::unique_ptr<KIVScene> scene(KIVScene::inq_unsetup_scene());
    scene->inq_xsheet()->set_length(FRAMES_BETWEEN_KEYS * KEYS);
    for (int i = 0; i < COLUMNS; ++i)
        scene->inq_xsheet()->add_column(make_column(i), nullptr);
    return scene;
}

void save(benchmark::State& state)
{
    const TempFolder folder;
    const std::unique_ptr<KIVScene> scene = make_scene();
    for (auto _ : state)
        if (!scene->save_to_file(folder.path("scene"), true, true, false))
            state.SkipWithError("not saved");
    const auto bytes = std::filesystem::file_size(folder.path("scene/XSheet").str());
    state.counters["bytes_a_key"] = double(bytes) / (COLUMNS * KEYS);
}

void load(benchmark::State& state)
{
    const TempFolder folder;
    make_scene()->save_to_file(folder.path("scene"), true, true, false);
    for (auto _ : state) {
        std::unique_ptr<KIVScene> scene(
            KIVScene::load_from_file(folder.path("scene"), nullptr, false));
        if (!scene)
            state.SkipWithError("not loaded");
        state.PauseTiming();
        scene.reset();
        state.ResumeTiming();
    }
}
} // namespace

BENCHMARK(save)->Unit(benchmark::kMillisecond);
BENCHMARK(load)->Unit(benchmark::kMillisecond);
