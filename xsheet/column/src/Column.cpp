#include "xsheet/column/hdr/Column.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/ColumnWatcher.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"

KIV_STORED_CLASS(Column, 81);

namespace {
constexpr FormatVersions HAS_BG_COLOUR = since(80);
constexpr FormatVersions HAS_COLOUR_TYPE = since(81);
constexpr int BEYOND_ALL_FRAMES = 10000000;

/// All below `column`, each column directly followed by what is in it.
template <class Function> void walk(const Column& column, const Function& function)
{
    for (SubColumn* member : column.inq_sub_column_list()->of<SubColumn>()) {
        function(member);
        if (member->is_column())
            walk(*static_cast<Column*>(member), function);
    }
}

template <class Predicate>
gsl::owner<KIVLinkedList*> list_below(const Column& column, const Predicate& is_wanted)
{
    auto* list = new KIVLinkedList(false);
    walk(column, [&](SubColumn* member) {
        if (is_wanted(member))
            list->add(member);
    });
    return list;
}
} // namespace

template <class Record> void Column::record(Record& r)
{
    r.template value_as<long>(next_sub_col_label);
    r.owned(bg_colour, HAS_BG_COLOUR);
    r.value(colour_type, HAS_COLOUR_TYPE, -1);
}

Column::Column(KIVIStream& stream) : SubColumn(stream)
{
    sub_columns.count_changes_in(&member_changes);
    read_sub_columns(stream);
    RecordReader r(stream);
    record(r);
}

/// What a list of objects stores, with nothing but sub-columns in it. Each belongs to this now,
/// whatever its own record says.
void Column::read_sub_columns(KIVIStream& stream)
{
    constexpr std::size_t LEAST_BYTES_OF_A_MEMBER = sizeof(short);
    RecordReader r(stream);
    for (int left = stream.read_count(LEAST_BYTES_OF_A_MEMBER); left > 0; --left) {
        std::unique_ptr<SubColumn> member;
        r.owned(member);
        if (!member)
            continue;
        member->set_column(this);
        sub_columns.add(member.release());
    }
}

void Column::storer(KIVOStream& stream)
{
    SubColumn::storer(stream);
    stream.insert_without_class_hdr(&sub_columns);
    RecordWriter w(stream);
    record(w);
}

Column::Column(const Column& other, bool)
    : SubColumn(other), next_sub_col_label(other.next_sub_col_label),
      bg_colour(other.bg_colour ? std::make_unique<KIVColour>(*other.bg_colour) : nullptr),
      colour_type(other.colour_type)
{
    sub_columns.count_changes_in(&member_changes);
    set_label(0); // the next owner gives one
    for (const SubColumn* member : other.members()) {
        SubColumn* copy = member->duplicate();
        copy->set_column(this);
        sub_columns.add(copy);
        copy->added_to_column(this);
    }
}

Column::~Column()
{
    sub_columns.remove_all_deleting_objects();
}

gsl::owner<SubColumn*> Column::duplicate() const
{
    return new Column(*this);
}

void Column::added_to_column(Column* to)
{
    SubColumn::added_to_column(to);
    for (SubColumn* member : members())
        member->added_to_column(this);
}

gsl::owner<KIVLinkedList*> Column::key_cells()
{
    auto* keys = new KIVLinkedList(false);
    for (SubColumn* member : members()) {
        const std::unique_ptr<KIVLinkedList> own_keys(member->key_cells());
        for (KeyCell* key : own_keys->of<KeyCell>())
            keys->add(key);
    }
    return keys;
}

int Column::inq_header_line()
{
    return 1 - inq_header_lines();
}

bool Column::can_make_key(int)
{
    return false;
}

void Column::column_being_removed()
{
    for (SubColumn* member : members())
        member->column_being_removed();
}

void Column::column_being_added()
{
    for (SubColumn* member : members())
        member->column_being_added();
}

bool Column::can_remove() const
{
    return true;
}

void Column::set_just_saved()
{
    SubColumn::set_just_saved();
    for (SubColumn* member : members())
        member->set_just_saved();
}

bool Column::load_finished_with_abort()
{
    SubColumn::load_finished_with_abort();
    for (SubColumn* member : members())
        if (member->load_finished_with_abort())
            return true;
    return false;
}

// With members the keys that stand directly on the column do not count.
bool Column::can_set_length(int frames)
{
    bool can_set = SubColumn::can_set_length(frames);
    for (SubColumn* member : members()) {
        can_set = member->can_set_length(frames);
        if (!can_set)
            break;
    }
    return can_set;
}

void Column::set_length(int frames)
{
    for (SubColumn* member : members())
        member->set_length(frames);
    SubColumn::set_length(frames);
}

bool Column::is_column() const
{
    return true;
}

bool Column::is_frame_the_same(int a, int b)
{
    for (SubColumn* member : members())
        if (!member->is_frame_the_same(a, b))
            return false;
    return true;
}

void Column::inq_key_range(int* low, int* high)
{
    for (SubColumn* member : members())
        member->inq_key_range(low, high);
}

int Column::find(const KIVString& text, int frame, int flags)
{
    const bool search_collapsed = (flags & XSheetFinderFlags::FlagSearchColapsed) != 0;
    if (compare_display_flags(COLLAPSED) && !search_collapsed)
        return 0;
    if ((flags & XSheetFinderFlags::FlagHeaderMode) != 0)
        return find_in_headers(text, frame, flags);
    const bool forwards = (flags & XSheetFinderFlags::FlagForwards) != 0;
    const int start = forwards ? BEYOND_ALL_FRAMES : -BEYOND_ALL_FRAMES;
    int best = start;
    for (SubColumn* member : members()) {
        const int found = member->find(text, frame, flags);
        if (found != 0 && (forwards ? found < best : found > best))
            best = found;
    }
    return best == start ? 0 : best;
}

int Column::find_in_headers(const KIVString& text, int frame, int flags)
{
    if (SubColumn::find(text, frame, flags) != 0)
        return -1;
    for (SubColumn* member : members())
        if (member->find(text, frame, flags) != 0)
            return -1;
    return 0;
}

void Column::get_dependencies(KIVStringList& files, bool flag)
{
    for (SubColumn* member : members())
        member->get_dependencies(files, flag);
}

void Column::mark_used_assets()
{
    for (SubColumn* member : members())
        member->mark_used_assets();
}

bool Column::is_empty()
{
    for (SubColumn* member : members())
        if (!member->is_empty())
            return false;
    return true;
}

void Column::clear_all_inbetweens()
{
    for (SubColumn* member : members())
        member->clear_all_inbetweens();
}

bool Column::add_sub_column(gsl::owner<SubColumn*> member, SubColumn* after)
{
    member->set_column(this);
    if (after)
        sub_columns.add_after(after, member);
    else
        sub_columns.add(member);
    if (member->inq_label() == 0)
        member->set_label(static_cast<unsigned>(next_sub_col_label++));
    member->set_needs_saving();
    tell_watchers_sub_column_added(member);
    member->added_to_column(this);
    member->column_being_added();
    return true;
}

bool Column::move_sub_column(SubColumn* member, SubColumn* after)
{
    KIVLinkOb* place = sub_columns.find(member);
    if (!place)
        return false;
    gsl::owner<KIVLinkOb*> link = sub_columns.remove_link(place);
    if (KIVLinkOb* before = after ? sub_columns.find(after) : nullptr)
        sub_columns.add_link_after(before, link);
    else
        sub_columns.add_link_first(link);
    set_needs_saving();
    return true;
}

bool Column::can_remove_sub_column(SubColumn*)
{
    return true;
}

gsl::owner<SubColumn*> Column::remove_sub_column(SubColumn* member)
{
    member->column_being_removed();
    tell_watchers_sub_column_removed(member);
    const bool was_member = sub_columns.remove(member);
    set_needs_saving();
    if (!was_member)
        return nullptr;
    member->set_column(nullptr);
    return member;
}

void Column::tell_watchers_sub_column_added(SubColumn* member)
{
    if (!inq_watchers())
        return;
    for (SubColumnWatcher* watcher : inq_watchers()->of<SubColumnWatcher>()) {
        if (ColumnWatcher* column_watcher = ColumnWatcher::as_column_watcher(watcher))
            column_watcher->sub_column_added(member);
        watcher->frames_all_changed();
    }
}

void Column::tell_watchers_sub_column_removed(SubColumn* member)
{
    if (!inq_watchers())
        return;
    for (SubColumnWatcher* watcher : inq_watchers()->of<SubColumnWatcher>()) {
        watcher->frames_all_changed();
        if (ColumnWatcher* column_watcher = ColumnWatcher::as_column_watcher(watcher))
            column_watcher->sub_column_removed(member);
    }
}

gsl::owner<KIVLinkedList*> Column::inq_deep_sub_column_list()
{
    return list_below(*this, [](const SubColumn*) { return true; });
}

gsl::owner<KIVLinkedList*> Column::inq_deep_sub_column_list(unsigned long type)
{
    return list_below(*this, [type](const SubColumn* member) {
        return static_cast<unsigned long>(member->inq_type()) == type;
    });
}

gsl::owner<KIVLinkedList*> Column::inq_shallow_sub_column_list()
{
    auto* list = new KIVLinkedList(false);
    for (SubColumn* member : members())
        if (!member->is_column())
            list->add(member);
    return list;
}

gsl::owner<KIVLinkedList*> Column::inq_columns()
{
    return list_below(*this, [](const SubColumn* member) { return member->is_column(); });
}

gsl::owner<KIVLinkedList*> Column::inq_containers_or_data(bool containers)
{
    return containers ? inq_columns() : inq_shallow_sub_column_list();
}

// Nodes ask for each value of each frame.
SubColumn* Column::find_sub_column(unsigned long member_label) const
{
    if (indexed_at != member_changes)
        index_sub_columns();
    if (member_label < FEW)
        return by_small_label[member_label];
    const auto place = std::ranges::lower_bound(by_label, member_label, {}, &Labelled::label);
    return place != by_label.end() && place->label == member_label ? place->member : nullptr;
}

void Column::index_sub_columns() const
{
    std::ranges::fill(by_small_label, nullptr);
    by_label.clear();
    for (SubColumn* member : members()) {
        const unsigned label = member->inq_label();
        if (label >= FEW)
            by_label.push_back({label, member});
        else if (!by_small_label[label])
            by_small_label[label] = member;
    }
    if (!std::ranges::is_sorted(by_label, {}, &Labelled::label))
        std::ranges::stable_sort(by_label, {}, &Labelled::label);
    indexed_at = member_changes;
}

int Column::search_for_sub_column_name(const KIVString& name, SubColumn** out, bool recurse)
{
    constexpr int AMBIGUOUS = -1;
    int found = 0;
    for (SubColumn* member : members()) {
        const KIVString* text = member->inq_header_text();
        if (text && *text == name) {
            const bool is_second = *out != nullptr;
            *out = is_second ? nullptr : member;
            if (is_second)
                return AMBIGUOUS;
            found = 1;
        } else if (recurse && member->is_column()) {
            auto* column = static_cast<Column*>(member);
            const int below = column->search_for_sub_column_name(name, out, recurse);
            if (below == AMBIGUOUS || (below == 1 && found == 1))
                return AMBIGUOUS;
            found = std::max(found, below);
        }
    }
    return found;
}

void Column::set_bg_colour(const KIVColour& colour)
{
    if (bg_colour)
        *bg_colour = colour;
    else
        bg_colour = std::make_unique<KIVColour>(colour);
    set_needs_saving();
}

void Column::set_colour_type(int type)
{
    colour_type = type;
    set_needs_saving();
}
