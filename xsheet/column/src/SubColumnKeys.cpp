#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/IntArray.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/SlotList.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/XSheet.h"

#include <unordered_set>

namespace {
void reset_reach(KeyCell* key)
{
    if (!key)
        return;
    key->reset_interp_len();
    key->set_needs_saving();
}

template <class Function>
void for_each_slot(const SlotList& slots, bool from_the_end, const Function& function)
{
    SlotIterator slot(&slots);
    while (from_the_end ? slot-- : slot++)
        function(slot());
}
} // namespace

KeyCell* SubColumn::find_key_at_or_before(int frame)
{
    return static_cast<KeyCell*>(key_cell_list.find_cell_at_or_before(frame));
}

KeyCell* SubColumn::find_key_before(int frame)
{
    return static_cast<KeyCell*>(key_cell_list.find_cell_before(frame));
}

int SubColumn::inq_last_key_position() const
{
    return inq_last_key() ? inq_last_key()->inq_number() : 0;
}

BaseCell* SubColumn::inq_cell(int frame)
{
    KeyCell* key = find_key_at_or_before(frame);
    return key ? key->inq_cell(frame) : nullptr;
}

int SubColumn::inq_key_pos_at_row(int frame)
{
    const KeyCell* key = find_key_at_or_before(frame);
    return key ? key_cell_list.inq_key_order(key) : -1;
}

CellType SubColumn::inq_celltype(int frame)
{
    const KeyCell* key = find_key_at_or_before(frame);
    if (!key)
        return CT_EMPTY;
    if (key->inq_number() == frame)
        return CT_KEY;
    switch (key->inq_mode()) {
    case IM_INBETWEEN:
        return key->inq_next_key() ? CT_INBETWEEN : CT_EMPTY;
    case IM_HOLD:
        return frame <= key->inq_number() + key->inq_interp_len() ? CT_HOLD : CT_EMPTY;
    default:
        return CT_EMPTY;
    }
}

bool SubColumn::can_make_key(int frame)
{
    return frame >= 1 && frame <= inq_scene_length() && inq_celltype(frame) != CT_KEY;
}

gsl::owner<KeyCell*> SubColumn::create_new_key_with_label(int new_label)
{
    return new KeyCell(this, -1, static_cast<unsigned>(new_label));
}

gsl::owner<KeyCell*> SubColumn::create_new_key()
{
    KeyCell* key = create_new_key_with_label(static_cast<int>(next_key_label));
    ++next_key_label;
    return key;
}

KeyCell* SubColumn::make_key(int frame)
{
    KeyCell* key = create_new_key();
    KeyCell* previous = find_key_before(frame);
    BaseCell* present = inq_cell(frame);
    const CellData* value = present ? present->inq_data() : nullptr;
    key->set_data(value ? value->duplicate() : key->create_data());
    if (value && key->inq_data()->inq_cell_ringed())
        key->ring_unring(); // the mark was for the old frame

    if (inq_celltype(frame) == CT_INBETWEEN && previous && previous->inq_fairing())
        split_fairing_for(key, previous, frame - previous->inq_number());
    insert_key(key, frame);
    if (previous)
        key->set_mode(previous->inq_mode());
    return key;
}

void SubColumn::split_fairing_for(KeyCell* new_key, KeyCell* previous, int offset)
{
    new_key->set_fairing(previous->inq_fairing()->split(offset));
    previous->fairing_changed();
    new_key->fairing_changed();
}

void SubColumn::insert_key(gsl::owner<KeyCell*> key, int frame)
{
    if (key->inq_sub_column() != this)
        key->set_sub_column(this);
    key_cell_list.add_cell_at(key, frame);
    key->set_needs_saving();
    key->reset_interp_len();
    if (KeyCell* previous = key->inq_prev_key()) {
        previous->set_needs_saving();
        previous->reset_interp_len();
        previous->clear_inbetweens();
    }
    key->clear_inbetweens();
    tell_watchers_frame_changed(frame);
    key->added_to_subcolumn(this);
}

bool SubColumn::can_insert_key(KeyCell*, int frame)
{
    return inq_celltype(frame) != CT_KEY;
}

bool SubColumn::can_insert_key_type(KeyCell* key)
{
    return key->inq_type() == inq_type();
}

bool SubColumn::insert_keys(int frame, KeyCell** keys, int count)
{
    const int offset = count > 0 ? frame - keys[0]->inq_number() : 0;
    for (int i = count - 1; i >= 0; --i) {
        KeyCell* key = keys[i];
        const int to = key->inq_number() + offset;
        if (!can_insert_key(key, to))
            continue;
        if (key->inq_sub_column() != this)
            key->set_sub_column(this);
        if (key->inq_label() == 0)
            key->set_label(next_key_label++);
        insert_key(key, to);
    }
    return true;
}

bool SubColumn::can_remove_key(KeyCell*)
{
    return true;
}

gsl::owner<KeyCell*> SubColumn::remove_key(KeyCell* key)
{
    key->removed_from_subcolumn(this);
    fully_dirty_inbetweens_around(key);
    KeyCell* previous = key->inq_prev_key();
    key_cell_list.remove_cell(key);
    if (previous)
        previous->reset_interp_len();
    tell_watchers_frame_changed(key->inq_number());
    set_needs_saving();
    return key;
}

void SubColumn::fully_dirty_inbetweens_around(KeyCell* key)
{
    if (!key)
        return;
    key->clear_inbetweens();
    if (KeyCell* previous = key->inq_prev_key())
        previous->clear_inbetweens();
}

void SubColumn::move_key_to(KeyCell* key, int frame)
{
    const int old_frame = key->inq_number();
    if (frame == old_frame)
        return;
    fully_dirty_inbetweens_around(key);
    KeyCell* old_previous = key->inq_prev_key();
    key_cell_list.remove_cell(key);
    make_gap_at(frame, frame < old_frame ? 1 : -1);
    key_cell_list.add_cell_at(key, frame);
    key->reset_interp_len();
    reset_reach(key);
    reset_reach(old_previous);
    reset_reach(key->inq_prev_key());
    fully_dirty_inbetweens_around(key);
    tell_watchers_frame_changed(frame);
    tell_watchers_frame_changed(old_frame);
}

/// From the far end of the chain of keys that stand `gap` apart, so that none meets another.
void SubColumn::make_gap_at(int frame, int gap)
{
    std::vector<BaseCell*> chain;
    if (gap != 0)
        for (BaseCell* key = key_cell_list.find_cell(frame); key;
             key = key_cell_list.find_cell(key->inq_number() + gap))
            chain.push_back(key);
    for (auto cell = chain.rbegin(); cell != chain.rend(); ++cell) {
        auto* key = static_cast<KeyCell*>(*cell);
        key->set_number(key->inq_number() + gap);
        reset_reach(key);
        reset_reach(key->inq_prev_key());
    }
}

bool SubColumn::is_in_insert_edit_mode()
{
    const XSheet* sheet = inq_xsheet();
    return sheet && sheet->inq_insert_edit_mode();
}

bool SubColumn::can_move_key_cells_by(SlotList& slots, int delta)
{
    const bool is_insert_edit = is_in_insert_edit_mode();
    const bool are_contiguous = inq_if_keys_are_contiguous(slots, nullptr);
    bool can_move = true;
    for_each_slot(slots, false, [&](int slot) {
        if (can_move && inq_celltype(slot) == CT_KEY)
            can_move = can_move_key_to(slot + delta, slots, is_insert_edit, are_contiguous);
    });
    return can_move;
}

bool SubColumn::can_move_key_to(int frame, SlotList& slots, bool is_insert_edit,
                                bool are_contiguous)
{
    if (frame <= 0 || frame > inq_scene_length())
        return false;
    if (is_insert_edit)
        return are_contiguous;
    return inq_celltype(frame) != CT_KEY || slots.contains_slot(frame);
}

void SubColumn::move_key_cells_by(SlotList& slots, int delta)
{
    if (is_in_insert_edit_mode()) {
        move_keys_in_insert_mode(slots, delta);
        return;
    }
    for_each_slot(slots, delta > 0, [&](int slot) { // so that keys never run over each other
        if (KeyCell* key = find_key_at_or_before(slot))
            move_key_to(key, slot + delta);
    });
}

bool SubColumn::inq_if_keys_are_contiguous(SlotList& slots, KIVLinkedList* out)
{
    std::unordered_set<const BaseCell*> cells;
    int left = 0;
    BaseCell* first = nullptr;
    for_each_slot(slots, false, [&](int slot) {
        BaseCell* cell = inq_cell(slot);
        if (left++ == 0)
            first = cell;
        cells.insert(cell);
    });
    if (!first)
        return false;
    while (first->inq_prev() && cells.contains(first->inq_prev()))
        first = first->inq_prev();
    for (BaseCell* cell = first; cell && left > 0 && cells.contains(cell);
         cell = cell->inq_next(), --left)
        if (out)
            out->add(cell);
    return left == 0;
}

namespace {
/// In-betweens lie in lists of their own, so the first tells for all.
bool is_run_of_keys(const KIVLinkedList& run)
{
    return static_cast<BaseCell*>(run.inq_first_link()->value())->is_a_key();
}
} // namespace

void SubColumn::move_keys_in_insert_mode(SlotList& slots, int delta)
{
    IntArray from, to;
    const auto add_move = [&](int slot, int by) {
        from.add(slot);
        to.add(slot + by);
    };
    KIVLinkedList run;
    if (inq_if_keys_are_contiguous(slots, &run) && is_run_of_keys(run)) {
        for_each_slot(slots, false, [&](int slot) { add_move(slot, delta); });
        const int first = static_cast<BaseCell*>(run.inq_first_link()->value())->inq_number();
        const int last = static_cast<BaseCell*>(run.inq_last_link()->value())->inq_number();
        const int width = last - first + 1;
        const int jumped_from = delta < 0 ? first + delta : last + 1;
        const int jumped_to = delta < 0 ? first - 1 : last + delta;
        for (BaseCell* key = find_key_behind(jumped_from); key && key->inq_number() <= jumped_to;
             key = key->inq_next())
            add_move(key->inq_number(), delta < 0 ? width : -width);
    }
    move_keys_to_slots(&from, &to);
}

void SubColumn::move_keys_to_slots(IntArray* from, IntArray* to)
{
    std::vector<std::pair<KeyCell*, int>> moves;
    std::vector<KeyCell*> left_behind;
    for (int i = 0; i < from->size(); ++i) {
        auto* key = static_cast<KeyCell*>(key_cell_list.find_cell(from->inq_element(i)));
        if (!key)
            continue;
        fully_dirty_inbetweens_around(key);
        tell_watchers_frame_changed(from->inq_element(i));
        moves.emplace_back(key, to->inq_element(i));
        if (KeyCell* previous = key->inq_prev_key())
            left_behind.push_back(previous);
        key_cell_list.remove_cell(key);
    }
    for (const auto& [key, frame] : moves)
        land_key(key, frame);
    for (KeyCell* key : left_behind)
        key->reset_interp_len();
}

void SubColumn::land_key(KeyCell* key, int frame)
{
    fully_dirty_inbetweens_around(key);
    key_cell_list.add_cell_at(key, frame);
    reset_reach(key);
    reset_reach(key->inq_prev_key());
    fully_dirty_inbetweens_around(key);
    tell_watchers_frame_changed(frame);
}

// A bare renumbering. The length of all but the last comes out as -1, and has to.
void SubColumn::move_key_cells(IntArray* from, IntArray* to)
{
    KeyCell* key = inq_first_key();
    while (key && from->size() > 0 && key->inq_number() != from->inq_element(0))
        key = key->inq_next_key();
    for (int i = 0; key && i < to->size(); ++i, key = key->inq_next_key()) {
        const int frame = to->inq_element(i);
        const bool is_last = i == to->size() - 1;
        key->set_number(frame);
        key->set_interp_len(is_last ? inq_scene_length() - frame : -1);
    }
}

gsl::owner<SlotList*> SubColumn::inq_keys_slot_postions() const
{
    auto* slots = new SlotList;
    for (const KeyCell* key = inq_first_key(); key; key = key->inq_next_key())
        slots->add_slot(key->inq_number());
    return slots;
}

KeyCell* SubColumn::find_key_behind(int frame)
{
    const KeyCell* previous = find_key_before(frame);
    return previous ? previous->inq_next_key() : inq_first_key();
}

int SubColumn::inq_space_at(int frame)
{
    const KeyCell* key = find_key_behind(frame);
    if (key && key->inq_number() >= frame)
        return key->inq_number() - frame;
    return inq_scene_length() + 1 - frame;
}

// In front of all keys it is the last key that counts.
bool SubColumn::can_make_space_at(int frame, int a, int b)
{
    const KeyCell* previous = find_key_before(frame);
    const KeyCell* key = previous ? previous->inq_next_key() : inq_last_key();
    if (!key)
        return inq_scene_length() + 1 - frame >= a;
    return inq_scene_length() - inq_last_key()->inq_number() >= b;
}

bool SubColumn::can_set_length(int frames)
{
    return !inq_last_key() || inq_last_key()->inq_number() <= frames;
}

void SubColumn::set_length(int frames)
{
    while (inq_last_key() && inq_last_key()->inq_number() > frames)
        delete key_cell_list.remove_cell(inq_last_key());
    if (inq_last_key())
        inq_last_key()->reset_interp_len();
}
