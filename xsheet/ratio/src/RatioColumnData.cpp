#include "xsheet/ratio/hdr/RatioColumnData.h"

#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/ratio/hdr/RatioSubColumnWatcher.h"
#include "xsheet/ratio/src/Raised.h"

KIV_STORED_CLASS(RatioColumnData, 119);

namespace {
constexpr FormatVersions HAS_LABELS = before(119);
constexpr FormatVersions HAS_SOURCE = since(119);

// Labels of the members of a move column.
constexpr unsigned long T_LABEL = 3;
constexpr unsigned long PATH_LABEL = 4;

Column* find_column(SubColumn* around, unsigned long label)
{
    SubColumn* found = static_cast<Column*>(around)->find_sub_column(label);
    return found && found->is_column() ? static_cast<Column*>(found) : nullptr;
}

Column* find_first_column_in(Column* column)
{
    for (SubColumn* member : column->inq_sub_column_list()->of<SubColumn>())
        if (member->is_column())
            return static_cast<Column*>(member);
    return nullptr;
}

/// The member of a move column that stands for `label`, which may be older than the move column.
SubColumn* find_in_move(Column* move, unsigned long label)
{
    auto* member = object_cast<NumericSubColumn>(move->inq_sub_column_list()->at_index(0));
    if (member && member->is_t_column(0))
        label = T_LABEL;
    else if (member && member->is_path_column(0))
        label = PATH_LABEL;
    return move->find_sub_column(label);
}
} // namespace

RatioColumnData::RatioColumnData(NumericSubColumn* sub_column) : sub_column(sub_column) {}

RatioColumnData::RatioColumnData(const RatioColumnData& other, NumericSubColumn* sub_column)
    : KIVObject(other), add_constant(other.add_constant), mult_constant(other.mult_constant),
      column_label(other.column_label), sub_column_label(other.sub_column_label),
      other_sub_column(other.other_sub_column), sub_column(sub_column)
{}

RatioColumnData::~RatioColumnData() = default;

template <class Record> void RatioColumnData::record(Record& r)
{
    r.value(add_constant);
    r.value(mult_constant);
    r.value(column_label, HAS_LABELS);
    r.value(sub_column_label, HAS_LABELS);
    r.link(other_sub_column, HAS_SOURCE);
    r.back_link(sub_column);
}

KIV_STORED_RECORD(RatioColumnData);

void RatioColumnData::load_finished()
{
    if (!other_sub_column)
        find_source();
    setup_watcher();
}

void RatioColumnData::find_source()
{
    XSheet* sheet = sub_column ? sub_column->inq_xsheet() : nullptr;
    if (!sheet || column_label == 0 || sub_column_label == 0)
        return;
    Column* column = find_column(sheet, column_label);
    if (!column)
        return;
    SubColumn* found = column->find_sub_column(sub_column_label);
    if (!found)
        if (Column* move = find_first_column_in(column))
            found = find_in_move(move, sub_column_label);
    other_sub_column = object_cast<NumericSubColumn>(found);
}

gsl::owner<RatioColumnData*> RatioColumnData::duplicate(NumericSubColumn* owner) const
{
    return new RatioColumnData(*this, owner);
}

void RatioColumnData::setup_watcher()
{
    watcher.reset();
    if (!other_sub_column)
        return;
    watcher = std::make_unique<RatioSubColumnWatcher>(other_sub_column, this);
    other_sub_column->add_watcher(watcher.get());
}

void RatioColumnData::watcher_deleted()
{
    static_cast<void>(watcher.release());
}

void RatioColumnData::column_values_changed_in_range(int first, int last)
{
    if (!sub_column || is_telling)
        return;
    const Raised telling(is_telling);
    sub_column->tell_watchers_frame_range_changed(first, last);
}

void RatioColumnData::change_all()
{
    if (sub_column)
        column_values_changed_in_range(1, sub_column->inq_scene_length());
}

void RatioColumnData::set_add_constant(double constant)
{
    add_constant = constant;
    if (sub_column)
        sub_column->set_needs_saving();
    change_all();
}

void RatioColumnData::set_mult_constant(double constant)
{
    mult_constant = constant;
    if (sub_column)
        sub_column->set_needs_saving();
    change_all();
}

double RatioColumnData::calc_element(int element, int frame) const
{
    if (!sub_column)
        return 0.0;
    if (!other_sub_column)
        return sub_column->inq_blank_value(element);
    return mult_constant * other_sub_column->inq_element(element, frame) + add_constant;
}
