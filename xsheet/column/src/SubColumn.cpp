#include "xsheet/column/hdr/SubColumn.h"

#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/cell/hdr/ColumnHeaderCell.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/column/hdr/SubColumnWatcher.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

KIV_STORED_CLASS(SubColumn, -1);

bool SubColumn::shuffle_to_make_space_for_keys = false;

namespace {
constexpr int IS_DIRTY = 1;
constexpr int LENGTH_WITHOUT_SCENE = 1000000;
constexpr int HEADER_LINES_WITHOUT_SHEET = 7;
constexpr int FOOTER_LINES_WITHOUT_SHEET = 5;

template <class Function> void for_each_key(const SubColumn& sub_column, Function function)
{
    for (KeyCell* key = sub_column.inq_first_key(); key; key = key->inq_next_key())
        function(key);
}
} // namespace

template <class Record> void SubColumn::record(Record& r)
{
    r.back_link(column);
    r.template value_as<long>(label);
    r.template value_as<long>(next_key_label);
    r.value(display_flags);
}

SubColumn::SubColumn(KIVIStream& stream)
    : KIVObject(stream), key_cell_list(stream), misc_cell_list(stream), flags(0)
{
    RecordReader r(stream);
    record(r);
    check_keys(stream);
    for_each_key(*this, [this](KeyCell* key) { key->set_sub_column(this); });
}

/// All that goes over keys relies on there being nothing else among them, and on them being nowhere
/// else.
void SubColumn::check_keys(KIVIStream& stream)
{
    bool are_keys = true;
    key_cell_list.for_each([&](const BaseCell* cell) { are_keys &= cell->is_a_key(); });
    bool are_rows = true;
    misc_cell_list.for_each([&](const BaseCell* cell) { are_rows &= !cell->is_a_key(); });
    if (are_keys && are_rows)
        return;
    stream.set_error_state(KIVStream::BAD_DATA);
    key_cell_list.delete_all_cells();
    misc_cell_list.delete_all_cells();
}

void SubColumn::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream.insert_without_class_hdr(&key_cell_list);
    stream.insert_without_class_hdr(&misc_cell_list);
    RecordWriter w(stream);
    record(w);
}

SubColumn::SubColumn(const SubColumn& other, bool)
    : KIVObject(other), label(other.label), next_key_label(other.next_key_label),
      display_flags(other.display_flags)
{
    other.key_cell_list.for_each(
        [this](const BaseCell* cell) { key_cell_list.add_cell(cell->duplicate()); });
    other.misc_cell_list.for_each(
        [this](const BaseCell* cell) { misc_cell_list.add_cell(cell->duplicate()); });
    for_each_key(*this, [this](KeyCell* key) { key->set_sub_column(this); });
}

SubColumn::SubColumn() = default;

SubColumn::~SubColumn()
{
    clear_watchers();
}

gsl::owner<SubColumn*> SubColumn::duplicate() const
{
    return new SubColumn(*this);
}

void SubColumn::init_after_construction()
{
    const int line = inq_header_line();
    if (line < -inq_header_lines() || line >= 1)
        return;
    const auto add_row = [this](BaseCell* row, const KIVString& text) {
        row->set_data(row->create_data());
        row->inq_data()->set_string(text);
        misc_cell_list.add_cell(row);
    };
    add_row(new ColumnHeaderCell(line, 0), inq_default_header_string());
    for (int row = -1; row > line; --row)
        add_row(new BaseCell(row, 0), "");
}

void SubColumn::added_to_column(Column* to)
{
    column = to;
    set_length(column->inq_scene_length());
}

int SubColumn::inq_type() const
{
    return 1;
}

KIVString SubColumn::inq_default_header_string() const
{
    return {};
}

KIVString SubColumn::inq_summary()
{
    const KeyCell* first = inq_first_key();
    const bool is_constant = !first || (first == inq_last_key() && first->inq_number() == 1);
    return is_constant ? "" : "...";
}

KIVString SubColumn::inq_header_path()
{
    if (!column)
        return {};
    const KIVString* text = inq_header_text();
    return column->inq_header_path() + " - " + (text ? *text : KIVString());
}

gsl::owner<KIVLinkedList*> SubColumn::key_cells()
{
    auto* list = new KIVLinkedList(false);
    for_each_key(*this, [list](KeyCell* key) { list->add(key); });
    return list;
}

int SubColumn::inq_scene_length() const
{
    return column ? column->inq_scene_length() : LENGTH_WITHOUT_SCENE;
}

int SubColumn::inq_header_lines() const
{
    return column ? column->inq_header_lines() : HEADER_LINES_WITHOUT_SHEET;
}

int SubColumn::inq_footer_lines() const
{
    return column ? column->inq_footer_lines() : FOOTER_LINES_WITHOUT_SHEET;
}

int SubColumn::inq_header_line()
{
    return 0;
}

int SubColumn::inq_total_lines() const
{
    return inq_footer_lines() + inq_header_lines() + inq_scene_length();
}

void SubColumn::set_label(unsigned l)
{
    label = l;
    if (column)
        column->forget_labels();
}

void SubColumn::column_being_removed() {}

void SubColumn::column_being_added() {}

bool SubColumn::can_remove() const
{
    return false;
}

void SubColumn::set_needs_saving()
{
    if (!inq_xs_store_control()->update_dirty_flags())
        return;
    flags |= IS_DIRTY;
    if (column)
        column->set_needs_saving();
}

void SubColumn::set_just_saved()
{
    flags = inq_xs_store_control()->clear_flags_after_save(flags);
    misc_cell_list.for_each([](BaseCell* cell) { cell->set_just_saved(); });
    key_cell_list.for_each([](BaseCell* cell) { cell->set_just_saved(); });
}

bool SubColumn::inq_needs_saving() const
{
    return inq_xs_store_control()->check_needs_saving_flags(flags);
}

bool SubColumn::load_finished_with_abort()
{
    bool has_aborted = false;
    key_cell_list.for_each(
        [&](BaseCell* key) { has_aborted = has_aborted || key->load_finished_with_abort(); });
    if (!has_aborted && !is_column())
        display_flags &= ~COLLAPSED; // columns alone stay collapsed
    return has_aborted;
}

bool SubColumn::is_column() const
{
    return false;
}

XSheet* SubColumn::inq_xsheet()
{
    return column ? column->inq_xsheet() : nullptr;
}

bool SubColumn::is_frame_the_same(int a, int b)
{
    BaseCell* cell_a = inq_cell(a);
    BaseCell* cell_b = inq_cell(b);
    if (!cell_a || !cell_b)
        return cell_a == cell_b;
    return cell_a->inq_data() == cell_b->inq_data();
}

void SubColumn::inq_key_range(int* low, int* high)
{
    if (!inq_first_key())
        return;
    *low = std::min(*low, inq_first_key()->inq_number());
    *high = std::max(*high, inq_last_key()->inq_number());
}

KIVColour* SubColumn::inq_bg_colour() const
{
    return nullptr;
}

int SubColumn::inq_colour_type() const
{
    return -1;
}

gsl::owner<SubColPrefs*> SubColumn::create_preferences_object()
{
    return nullptr;
}

void SubColumn::apply_preferences_object(SubColPrefs*) {}

void SubColumn::get_dependencies(KIVStringList&, bool) {}

void SubColumn::mark_used_assets() {}

bool SubColumn::is_empty()
{
    return !inq_first_key();
}

void SubColumn::convert_ratio_column_to_key_based() {}

void SubColumn::clear_all_inbetweens()
{
    for_each_key(*this, [](KeyCell* key) { key->clear_inbetweens(); });
}

int SubColumn::find(const KIVString& text, int frame, int search_flags)
{
    const bool search_collapsed = (search_flags & XSheetFinderFlags::FlagSearchColapsed) != 0;
    if (compare_display_flags(COLLAPSED) && !search_collapsed)
        return 0;
    if ((search_flags & XSheetFinderFlags::FlagHeaderMode) != 0)
        return find_in_header(text, frame, search_flags);
    return find_in_keys(text, frame, search_flags);
}

int SubColumn::find_in_header(const KIVString& text, int frame, int search_flags) const
{
    for (BaseCell* row = inq_header_cell(); row; row = row->inq_next())
        if (row->find(text, frame, search_flags) != 0)
            return -1;
    return 0;
}

int SubColumn::find_in_keys(const KIVString& text, int frame, int search_flags)
{
    const bool forwards = (search_flags & XSheetFinderFlags::FlagForwards) != 0;
    auto* key = static_cast<KeyCell*>(key_cell_list.find_cell_at_or_before(frame));
    if (!key && forwards)
        key = inq_first_key();
    for (; key; key = forwards ? key->inq_next_key() : key->inq_prev_key())
        if (const int found = key->find(text, frame, search_flags))
            return found;
    return 0;
}

void SubColumn::set_display_flags(unsigned bits)
{
    display_flags |= bits;
    set_needs_saving();
}

void SubColumn::clear_display_flags(unsigned bits)
{
    display_flags &= ~bits;
    set_needs_saving();
}

void SubColumn::set_collapsed()
{
    display_flags = (display_flags & ~HIDDEN) | COLLAPSED;
    set_needs_saving();
}

void SubColumn::set_hidden()
{
    display_flags = (display_flags & ~COLLAPSED) | HIDDEN;
    set_needs_saving();
}

void SubColumn::set_fully_shown()
{
    clear_display_flags(HIDDEN | COLLAPSED);
}

gsl::owner<BaseCell*> SubColumn::remove_misc_cell(BaseCell* cell)
{
    return misc_cell_list.remove_cell(cell);
}

void SubColumn::set_header_text(const KIVString& text)
{
    BaseCell* header = inq_header_cell();
    if (header && header->inq_data())
        header->inq_data()->set_string(text);
}

// A node is asked for its name, which is this text, for each frame.
KIVString* SubColumn::inq_header_text() const
{
    if (header_text && header_read_at == misc_cell_list.inq_change_count())
        return header_text;
    BaseCell* header = inq_header_cell();
    CellData* data = header ? header->inq_data() : nullptr;
    KIVString* text = data ? data->inq_string() : nullptr;
    const bool is_lasting =
        data && data->inq_class_descriptor() == CellData::inq_class_descriptor_s();
    header_text = is_lasting ? text : nullptr;
    header_read_at = misc_cell_list.inq_change_count();
    return text;
}

SubColumnWatcher* SubColumn::inq_watcher(unsigned long watcher_label) const
{
    if (!watchers)
        return nullptr;
    for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>())
        if (watcher->inq_label() == watcher_label)
            return watcher;
    return nullptr;
}

void SubColumn::add_watcher(SubColumnWatcher* watcher)
{
    if (!watchers)
        watchers = std::make_unique<KIVLinkedList>(false);
    watchers->add(watcher);
    watcher->listed_in = this;
}

SubColumnWatcher* SubColumn::remove_watcher(SubColumnWatcher* watcher)
{
    const bool is_removed = watchers && watchers->remove(watcher);
    if (is_removed && watcher->listed_in == this && !watchers->find(watcher))
        watcher->listed_in = nullptr;
    return watcher;
}

void SubColumn::tell_watchers_all_frames_changed()
{
    if (watchers)
        for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>())
            watcher->frames_all_changed();
}

void SubColumn::tell_watchers_frame_changed(int frame)
{
    if (watchers)
        for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>())
            watcher->frame_changed(frame);
}

void SubColumn::tell_watchers_frame_range_changed(int first, int last)
{
    if (watchers)
        for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>())
            watcher->frame_range_changed(first, last);
}

void SubColumn::inform_watchers_column_being_removed()
{
    if (watchers)
        for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>())
            watcher->subcolumn_being_removed();
}

void SubColumn::clear_watchers()
{
    if (!watchers)
        return;
    const KIVLinkedList told = *watchers; // one may take another away
    for (SubColumnWatcher* watcher : told.of<SubColumnWatcher>())
        if (watchers->find(watcher))
            watcher->scene_closing();
    for (SubColumnWatcher* watcher : watchers->of<SubColumnWatcher>()) {
        watcher->listed_in = nullptr;
        if (watcher->sub_column == this)
            watcher->sub_column = nullptr;
    }
    watchers.reset();
}
