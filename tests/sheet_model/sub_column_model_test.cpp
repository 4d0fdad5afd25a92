#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/SlotList.h"
#include "tests/sheet_model/SubColumnModel.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/column/hdr/XSheetWatcher.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {
constexpr int MOST_FRAMES = 30;
constexpr int RUNS = 500;
constexpr int STEPS = 200; // of a run

using Index = SubColumnModel::Index;

/// One step, whose numbers mean something whatever stands in the column.
struct Edit {
    enum Kind {
        MAKE,
        PASTE,
        REMOVE,
        MOVE,
        MOVE_MANY,
        MODE,
        LIMIT,
        RATE,
        EASE,
        VALUE,
        COPY_MODE,
        LENGTH
    };
    /// Those that leave a column full of keys come more often.
    static constexpr Kind DRAWN[] = {MAKE, MAKE,      PASTE,     PASTE,     REMOVE,
                                     MOVE, MOVE_MANY, MOVE_MANY, MODE,      LIMIT,
                                     RATE, EASE,      VALUE,     COPY_MODE, LENGTH};

    Kind kind;
    int a, b;
    unsigned bits;
};

/// Who reads the column before an edit and during it. Whatever was worked out then must not stay.
enum class Readers { OF_CELLS, OF_VALUES_ALONE, ON_NOTICE };

/// Reads all frames whenever it is told of one, as a column does that follows the watched one.
class Reader : public SubColumnWatcher {
public:
    explicit Reader(NumericSubColumn& watched)
        : SubColumnWatcher(&watched, allocate_unique_watcher_label(), nullptr), read(watched)
    {
        watched.add_watcher(this);
    }

    void range_changed_notifier(int, int) override
    {
        for (int frame = 1; frame <= MOST_FRAMES; ++frame)
            read.inq_element(0, frame);
    }

private:
    NumericSubColumn& read;
};

/// A sub-column in a sheet and the model of it, which do the same.
class EditedColumn {
public:
    explicit EditedColumn(Readers readers) : readers(readers)
    {
        sheet.add_sub_column(column, nullptr);
        column->add_sub_column(edited, nullptr);
        sheet.set_length(MOST_FRAMES);
        model.length = MOST_FRAMES;
        sheet.add_watcher(&watcher);
        watcher.setup_watch_sub_columns();
        if (readers == Readers::ON_NOTICE)
            reader = std::make_unique<Reader>(*edited);
    }
    EditedColumn(const EditedColumn&) = delete;

    /// What went wrong; empty if nothing did.
    std::string apply(const Edit& edit)
    {
        wrong.str("");
        if (readers == Readers::OF_VALUES_ALONE) {
            edited->clear_all_inbetweens();
            compare_values();
        }
        SubColumnWatcher* told = edited->inq_watcher(watcher.inq_label());
        for (SubColumnWatcher* each : std::initializer_list<SubColumnWatcher*>{told, &watcher})
            each->clear_frames(SlotList(each->inq_changed_frames()));
        const SubColumnModel before = model;
        model.untold = model.touched = {};
        run(edit);
        compare_keys();
        compare_values();
        compare_cells();
        compare_values();
        compare_notices(before, *told);
        if (told->inq_changed_frames().inq_ranges() != watcher.inq_changed_frames().inq_ranges())
            wrong << " the sheet was told something else;";
        return wrong.str();
    }

private:
    void run(const Edit& edit)
    {
        if (edit.kind == Edit::MAKE)
            return make(1 + edit.a % model.length);
        if (edit.kind == Edit::PASTE)
            return paste(edit);
        if (edit.kind == Edit::LENGTH)
            return set_length(MOST_FRAMES - edit.a % (1 + edit.b % 20));
        if (edit.kind == Edit::MOVE_MANY)
            return move_many(edit);
        if (!model.keys.empty())
            change_key(edit, Index(edit.a) % model.keys.size());
    }

    void change_key(const Edit& edit, Index i)
    {
        SubColumnModel::Key& key = model.keys[i];
        KeyCell* cell = cell_of(i);
        model.touched.add(key.frame);
        switch (edit.kind) {
        case Edit::REMOVE:
            delete edited->remove_key(cell);
            model.take(i);
            break;
        case Edit::MOVE:
            edited->move_key_to(cell, 1 + edit.b % model.length);
            model.move(i, 1 + edit.b % model.length);
            break;
        case Edit::MODE:
            cell->set_mode(static_cast<InterpMode>(edit.b % 3));
            model.set_mode(i, static_cast<InterpMode>(edit.b % 3));
            break;
        case Edit::LIMIT:
            cell->set_target_interp_len(edit.b % 12);
            model.limit(i, edit.b % 12);
            break;
        case Edit::RATE:
            key.rate = 1 + edit.b % 3;
            cell->set_sample_rate(key.rate);
            break;
        case Edit::EASE:
            key.easing = {true};
            cell->inq_fairing()->create_empty_cps(2);
            *cell->inq_fairing()->inq_control_point(0) = {{0.0, 0.0}, {}, {1.0 / 3.0, 0.0}};
            *cell->inq_fairing()->inq_control_point(1) = {{1.0, 1.0}, {-1.0 / 3.0, 0.0}, {}};
            cell->fairing_changed();
            break;
        case Edit::VALUE:
            key.value = edit.b - 15;
            static_cast<BaseNumericCellData*>(cell->inq_data())->set_element(0, key.value);
            break;
        default:
            copy_mode(i, Index(edit.b) % model.keys.size());
        }
    }

    void make(int frame)
    {
        if (edited->can_make_key(frame) == model.is_key_at(frame))
            wrong << " can_make_key;";
        if (model.is_key_at(frame))
            return;
        model.make(frame, edited->make_key(frame));
    }

    /// Copies of one key, up to three at a distance.
    void paste(const Edit& edit)
    {
        const int count = 1 + edit.b % 3;
        const int distance = 1 + edit.b % 4;
        const int width = (count - 1) * distance;
        const int frame = 1 + edit.a % model.length;
        if (model.keys.empty() || frame + width > model.length)
            return;
        const Index copied = edit.bits % model.keys.size();
        const SubColumnModel::Key original = model.keys[copied];
        std::vector<KeyCell*> cells;
        for (int i = 0; i < count; ++i) {
            cells.push_back(static_cast<KeyCell*>(cell_of(copied)->duplicate()));
            cells.back()->set_number(100 + i * distance);
        }
        model.touched.add({frame, frame + width + model.reach_of(copied)});
        edited->insert_keys(frame, cells.data(), count);
        for (int i = 0; i < count; ++i)
            if (const int to = frame + i * distance; model.is_key_at(to))
                delete cells[Index(i)];
            else
                model.insert(copy_of(original, cells[Index(i)], to));
    }

    static SubColumnModel::Key copy_of(SubColumnModel::Key key, const KeyCell* cell, int frame)
    {
        key.cell = cell;
        key.frame = frame;
        return key;
    }

    void move_many(const Edit& edit)
    {
        const bool is_inserting = edit.b % 2 == 0;
        const SubColumnModel::Selection moved{select(edit, is_inserting), edit.a / 2 - 7};
        if (moved.slots.empty() || moved.delta + *moved.slots.begin() < 1 ||
            moved.delta + *moved.slots.rbegin() > model.length)
            return;
        sheet.change_insert_edit_mode(is_inserting);
        SlotList slots;
        for (const int slot : moved.slots)
            slots.add_slot(slot);
        if (edited->can_move_key_cells_by(slots, moved.delta) !=
            model.can_move(moved, is_inserting))
            wrong << " can_move_key_cells_by;";
        edited->move_key_cells_by(slots, moved.delta);
        is_inserting ? model.move_inserting(moved) : model.move(moved);
    }

    /// The keys on some frames; without `only_keys` some of these frames as they are.
    std::set<int> select(const Edit& edit, bool only_keys) const
    {
        std::set<int> slots;
        const int first = int(edit.bits % unsigned(model.length));
        const int last = std::min(first + edit.b, model.length);
        for (int frame = first; frame <= last; ++frame) {
            const bool is_lucky = edit.bits >> frame & 1;
            if (model.is_key_at(frame) ? edit.b % 3 != 0 || is_lucky
                                       : edit.b % 5 == 0 && is_lucky && !only_keys)
                slots.insert(frame);
        }
        return slots;
    }

    void copy_mode(Index to, Index from)
    {
        SubColumnModel::Key& key = model.keys[to];
        const SubColumnModel::Key source = model.keys[from];
        const bool differs = key.mode != source.mode || key.rate != source.rate ||
                             !key.easing.is_like(source.easing);
        const bool is_like_but_for_rounding = !differs && key.easing.is_gentle;
        model.set_mode(to, source.mode);
        key.rate = source.rate;
        key.easing = source.easing;
        if (cell_of(to)->copy_interp_data_from(cell_of(from)) != differs &&
            !is_like_but_for_rounding)
            wrong << " copy_interp_data_from;";
    }

    void set_length(int frames)
    {
        const bool fits = model.keys.empty() || model.keys.back().frame <= frames;
        if (sheet.can_set_length(frames) != fits)
            wrong << " can_set_length;";
        sheet.set_length(frames);
        model.set_length(frames);
    }

    KeyCell* cell_of(Index i) const
    {
        KeyCell* cell = edited->inq_first_key();
        for (; i > 0; --i)
            cell = cell->inq_next_key();
        return cell;
    }

    void compare_keys()
    {
        const KeyCell* cell = edited->inq_first_key();
        for (Index i = 0; i < model.keys.size(); ++i) {
            const SubColumnModel::Key& key = model.keys[i];
            if (cell != key.cell || cell->inq_number() != key.frame ||
                cell->inq_mode_actual() != key.mode || cell->inq_sample_rate() != key.rate ||
                cell->inq_target_interp_len() != key.limit)
                wrong << " the key on " << key.frame << ";";
            if (!cell)
                return;
            if (cell->inq_interp_len() != model.reach_of(i))
                wrong << " the reach of " << key.frame << ": " << cell->inq_interp_len() << ";";
            cell = cell->inq_next_key();
        }
        if (cell)
            wrong << " a key on " << cell->inq_number() << ";";
    }

    void compare_values()
    {
        for (int frame = 1; frame <= model.length + 2; ++frame)
            if (const double value = edited->inq_element(0, frame);
                std::abs(value - model.show(frame).value) > 1e-9)
                wrong << " the value on " << frame << ": " << value << ";";
    }

    void compare_cells()
    {
        for (int frame = 1; frame <= model.length + 2; ++frame) {
            const SubColumnModel::Shown shown = model.show(frame);
            const BaseCell* cell = edited->inq_cell(frame);
            const bool is_inbetween = cell && cell->is_an_inbetween();
            if ((is_inbetween ? cell->inq_prev_key() : cell) != shown.key ||
                is_inbetween != (shown.type == CT_INBETWEEN))
                wrong << " the cell on " << frame << ";";
            if (edited->inq_celltype(frame) != shown.type)
                wrong << " the type on " << frame << ";";
            if (edited->inq_space_at(frame) != model.space_at(frame))
                wrong << " the space at " << frame << ";";
        }
    }

    /// All that changed is told, but what the edit keeps to itself, and nothing beyond the keys
    /// next to what it touched.
    void compare_notices(const SubColumnModel& before, const SubColumnWatcher& told)
    {
        Frames open;
        if (!model.touched.are_none()) {
            open = before.between_neighbours(model.touched);
            open.add(model.between_neighbours(model.touched));
        }
        for (int frame = 1; frame <= model.length; ++frame) {
            const bool is_told = told.inq_frame_changed(frame);
            if (!is_told && !before.show(frame).is_like(model.show(frame)) &&
                !model.untold.hold(frame))
                wrong << " frame " << frame << " was not told;";
            if (is_told && !open.hold(frame))
                wrong << " frame " << frame << " was told;";
        }
    }

    const Readers readers;
    XSheet sheet{nullptr};
    Column* column = new Column;
    NumericSubColumn* edited = new NumericSubColumn(1);
    XSheetWatcher watcher{&sheet, allocate_unique_watcher_label()};
    std::unique_ptr<Reader> reader;
    SubColumnModel model;
    std::ostringstream wrong;
};

Edit make_edit(std::mt19937& random)
{
    const auto below = [&](std::size_t end) { return static_cast<int>(random() % end); };
    return {Edit::DRAWN[below(std::size(Edit::DRAWN))], below(MOST_FRAMES), below(MOST_FRAMES),
            static_cast<unsigned>(random())};
}
} // namespace

TEST(SubColumnModel, agrees_with_a_sub_column_after_any_edit)
{
    for (unsigned seed = 0; seed < RUNS; ++seed) {
        std::mt19937 random(seed);
        const auto readers = static_cast<Readers>(seed % 3);
        EditedColumn column(readers);
        for (int step = 0; step < STEPS; ++step)
            ASSERT_EQ(column.apply(make_edit(random)), "") << "seed " << seed << ", step " << step;
    }
}
