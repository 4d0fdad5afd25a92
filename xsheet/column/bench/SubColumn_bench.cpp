#include "kivlib/hdr/SlotList.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/column/hdr/XSheetWatcher.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <benchmark/benchmark.h>
#include <random>

// What an edit costs in a sub-column of many keys that is watched up to the sheet: it is not to
// grow with their number.

namespace {
constexpr int DISTANCE = 4; // from key to key

struct EditedColumn {
    explicit EditedColumn(int count) : keys(count)
    {
        auto* column = new Column;
        sheet.add_sub_column(column, nullptr);
        column->add_sub_column(edited, nullptr);
        sheet.set_length((count + 10) * DISTANCE);
        for (int i = 1; i <= count; ++i)
            edited->make_key(i * DISTANCE);
        sheet.add_watcher(&watcher);
        watcher.setup_watch_sub_columns();
    }

    int any() { return 1 + int(random() % unsigned(keys)); }

    KeyCell* any_key()
    {
        return static_cast<KeyCell*>(edited->inq_key_cell_list()->find_cell(any() * DISTANCE));
    }

    XSheet sheet{nullptr};
    NumericSubColumn* edited = new NumericSubColumn(1);
    XSheetWatcher watcher{&sheet, allocate_unique_watcher_label()};
    int keys;
    std::mt19937 random{1};
};

template <class Edit> void run(benchmark::State& state, const Edit& edit)
{
    EditedColumn column(int(state.range(0)));
    for (auto _ : state)
        edit(column);
    state.SetItemsProcessed(state.iterations());
}

void set_value(benchmark::State& state)
{
    run(state, [](EditedColumn& c) {
        static_cast<BaseNumericCellData*>(c.any_key()->inq_data())->set_element(0, c.any());
    });
}

/// By a watcher who shows the frames one by one, while many single ones wait.
void show_one_and_set_another(benchmark::State& state)
{
    EditedColumn column(int(state.range(0)));
    for (KeyCell* key = column.edited->inq_first_key(); key; key = key->inq_next_key())
        key->set_mode(IM_STOP);
    column.watcher.clear_all_frames();
    for (auto _ : state) {
        SubColumnWatcher& shown = column.watcher;
        shown.clear_frame(column.any() * DISTANCE);
        auto* data = static_cast<BaseNumericCellData*>(column.any_key()->inq_data());
        data->set_element(0, column.any());
    }
    state.SetItemsProcessed(state.iterations());
}

void make_and_remove(benchmark::State& state)
{
    run(state, [](EditedColumn& c) {
        delete c.edited->remove_key(c.edited->make_key(c.any() * DISTANCE + 1));
    });
}

void move_there_and_back(benchmark::State& state)
{
    run(state, [](EditedColumn& c) {
        KeyCell* key = c.any_key();
        const int frame = key->inq_number();
        c.edited->move_key_to(key, c.any() * DISTANCE + 2);
        c.edited->move_key_to(key, frame);
    });
}

/// One edit is the move of one key.
void move_all(benchmark::State& state, bool is_inserting)
{
    EditedColumn column(int(state.range(0)));
    column.sheet.change_insert_edit_mode(is_inserting);
    int frame = DISTANCE;
    for (auto _ : state) {
        SlotList slots;
        for (int i = 0; i < column.keys; ++i)
            slots.add_slot(frame + i * DISTANCE);
        const int delta = frame == DISTANCE ? 1 : -1;
        benchmark::DoNotOptimize(column.edited->can_move_key_cells_by(slots, delta));
        column.edited->move_key_cells_by(slots, delta);
        frame += delta;
    }
    state.SetItemsProcessed(state.iterations() * column.keys);
}

void move_all_aside(benchmark::State& state)
{
    move_all(state, false);
}
void move_all_inserting(benchmark::State& state)
{
    move_all(state, true);
}

BENCHMARK(set_value)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(show_one_and_set_another)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(make_and_remove)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(move_there_and_back)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(move_all_aside)->RangeMultiplier(10)->Range(100, 100000);
BENCHMARK(move_all_inserting)->RangeMultiplier(10)->Range(100, 100000);
} // namespace
