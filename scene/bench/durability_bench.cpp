#include "scene/hdr/KIVScene.h"
#include "tests/support/TempFolder.h"

#include <benchmark/benchmark.h>
#include <memory>

// What a save costs that lasts through a power cut: a scene without keys, saved over itself on the
// disc, and in memory, where a sync costs next to nothing. Real time, since a sync is waiting.

namespace {
void save_over(benchmark::State& state, const TempFolder& folder)
{
    const std::unique_ptr<KIVScene> scene(KIVScene::inq_unsetup_scene());
    for (auto _ : state)
        if (!scene->save_to_file(folder.path("scene"), true, true, false))
            state.SkipWithError("not saved");
}

void durable_save_on_disc(benchmark::State& state)
{
    save_over(state, TempFolder());
}
void durable_save_in_memory(benchmark::State& state)
{
    save_over(state, TempFolder("/dev/shm"));
}
} // namespace

BENCHMARK(durable_save_on_disc)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(durable_save_in_memory)->UseRealTime()->Unit(benchmark::kMillisecond);
