#include "xsheet/numeric/hdr/NumericKeyCell.h"

#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/numeric/hdr/NumericTSubColumn.h"
#include "xsheet/numeric/hdr/NumericXYSubColumn.h"
#include "xsheet/numeric/hdr/ScaleSubColumn.h"
#include "xsheet/numeric/hdr/WidthSubColumn.h"
#include "xsheet/numeric/src/make_numeric_data.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"

#include <typeinfo>

KIV_STORED_CLASS(NumericKeyCell, 125);

namespace {
constexpr FormatVersions HAS_RATIO_DATA = since(125);
constexpr double FIND_TOLERANCE = 0.000001;

/// As the sub-column shows its values.
bool read_value(const KIVString& text, const NumericSubColumn& column, double* value)
{
    const KIVDefaultUnitHandler* handler = column.inq_unit_handler();
    const bool is_angle = column.is_angle_column();
    return column.is_y_column(0) ? handler->y_to_internal(text, value, is_angle)
                                 : handler->x_to_internal(text, value, is_angle);
}

bool is_close(double a, double b)
{
    return std::abs(a - b) < FIND_TOLERANCE;
}

/// A value on its way from `before` to `now` was at `sought`, or is there.
bool has_crossed(double before, double now, double sought)
{
    return is_close(now, sought) || (before < sought) != (now < sought);
}
} // namespace

NumericKeyCell::NumericKeyCell(NumericSubColumn* sub_column, int number, unsigned label)
    : KeyCell(sub_column, number, label)
{
    KeyCell::set_mode(IM_INBETWEEN);
}

NumericKeyCell::NumericKeyCell(const NumericKeyCell& other) : KeyCell(other)
{
    if (!other.ratio_data)
        return;
    ratio_data.reset(other.ratio_data->duplicate(this));
    ratio_data->setup_watcher();
}

NumericKeyCell::NumericKeyCell(KIVIStream& stream) : KeyCell(stream)
{
    RecordReader reader(stream);
    record(reader);
    if (ratio_data)
        ratio_data->set_key(this);
}

NumericKeyCell::~NumericKeyCell() = default;

template <class Record> void NumericKeyCell::record(Record& r)
{
    r.owned(ratio_data, HAS_RATIO_DATA);
}

void NumericKeyCell::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

gsl::owner<CellData*> NumericKeyCell::create_data()
{
    return make_numeric_data(this, inq_order());
}

NumericSubColumn* NumericKeyCell::inq_numeric_sub_column() const
{
    return static_cast<NumericSubColumn*>(inq_sub_column());
}

int NumericKeyCell::inq_order() const
{
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    return sub_column ? sub_column->inq_order() : 1;
}

KIVDefaultUnitHandler* NumericKeyCell::inq_unit_handler() const
{
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    return sub_column ? sub_column->inq_unit_handler() : nullptr;
}

BaseCell* NumericKeyCell::inq_cell(int frame)
{
    if (!ratio_data || inq_mode() == IM_STOP)
        return KeyCell::inq_cell(frame);
    const bool is_own_inbetween = Fairing::inq_half_frame() && inq_mode() == IM_INBETWEEN;
    if (frame == inq_number() && !is_own_inbetween)
        return this;
    if (frame > inq_number() + inq_interp_len())
        return nullptr;
    const int offset = frame - inq_number();
    BaseCell* cell = find_inbetween(offset);
    return cell ? cell : create_and_add_inbetween(offset);
}

gsl::owner<BaseCell*> NumericKeyCell::create_inbetween(int offset)
{
    return new NumericInbetweenCell(this, offset);
}

namespace {
/// Whether a key makes its in-betweens as this room does. They differ only in what they are called.
bool is_ordinary(const NumericKeyCell& key)
{
    const std::type_info& type = typeid(key);
    return type == typeid(NumericKeyCell) || type == typeid(NumericXYKeyCell) ||
           type == typeid(NumericTKeyCell) || type == typeid(AngleKeyCell) ||
           type == typeid(ScaleKeyCell) || type == typeid(WidthKeyCell);
}
} // namespace

bool NumericKeyCell::has_value()
{
    const CellData* data = inq_data();
    return data && static_cast<const BaseNumericCellData*>(data)->inq_value().size() == inq_order();
}

bool NumericKeyCell::is_plain()
{
    return !ratio_data && !has_inbetweens() && is_ordinary(*this) && has_value();
}

bool NumericKeyCell::goes_straight()
{
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    const NumericColumnPolicy* policy = sub_column ? sub_column->inq_policy() : nullptr;
    return inq_mode() == IM_INBETWEEN && policy &&
           typeid(*policy) == typeid(NormalNumericColumnPolicy) && is_plain() &&
           static_cast<NumericKeyCell*>(inq_next_key())->has_value();
}

double NumericKeyCell::blend_with_next(int i, double factor)
{
    auto* next = static_cast<NumericKeyCell*>(inq_next_key());
    return (1.0 - factor) * inq_own_element(i) + factor * next->inq_own_element(i);
}

double NumericKeyCell::inq_own_element(int i)
{
    const CellData* data = inq_data();
    return data ? static_cast<const BaseNumericCellData*>(data)->inq_element(i) : 0.0;
}

bool NumericKeyCell::is_increasing()
{
    auto* next = static_cast<NumericKeyCell*>(inq_next_key());
    const bool decreases =
        inq_order() == 1 && next && next->inq_own_element(0) < inq_own_element(0);
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    return sub_column && sub_column->is_angle_column() ? decreases : !decreases;
}

double NumericKeyCell::inq_difference_from_previous_key(int i)
{
    auto* previous = static_cast<NumericKeyCell*>(inq_prev_key());
    return previous ? inq_own_element(i) - previous->inq_own_element(i) : 0.0;
}

double NumericKeyCell::inq_difference_from_this_key(int frame, int i)
{
    NumericSubColumn* sub_column = inq_numeric_sub_column();
    return sub_column ? sub_column->inq_element(i, frame) - inq_own_element(i) : 0.0;
}

double NumericKeyCell::inq_difference_from_previous_frame(int frame, int i)
{
    NumericSubColumn* sub_column = inq_numeric_sub_column();
    if (!sub_column || frame <= 0)
        return 0.0;
    return sub_column->inq_element(i, frame) - sub_column->inq_element(i, frame - 1);
}

double NumericKeyCell::inq_difference_from_previous_frame(int i)
{
    auto* previous = static_cast<NumericKeyCell*>(inq_prev_key());
    if (!previous)
        return 0.0;
    BaseCell* cell = previous->inq_cell(previous->inq_number() + previous->inq_interp_len());
    const CellData* data = cell ? cell->inq_data() : nullptr;
    if (!data)
        return 0.0;
    return inq_own_element(i) - static_cast<const BaseNumericCellData*>(data)->inq_element(i);
}

int NumericKeyCell::find(const KIVString& text, int frame, int flags)
{
    const NumericSubColumn* sub_column = inq_numeric_sub_column();
    double value = 0.0;
    if (!sub_column || !read_value(text, *sub_column, &value))
        return 0;
    if (inq_mode() == IM_INBETWEEN && !(flags & XSheetFinderFlags::FlagExactMatch))
        return find_crossing(value, frame, flags);
    if ((flags & XSheetFinderFlags::FlagForwards) && frame > inq_number())
        return 0;
    return is_close(inq_own_element(0), value) ? inq_number() : 0;
}

/// The frame, from this key to the next, on which the value is reached or has been passed, in the
/// direction of the search from `frame` on; 0 if it is not.
int NumericKeyCell::find_crossing(double value, int frame, int flags)
{
    auto* next = static_cast<NumericKeyCell*>(inq_next_key());
    const auto [low, high] = std::minmax({inq_own_element(0), next->inq_own_element(0)});
    if (value < low - FIND_TOLERANCE || value > high + FIND_TOLERANCE)
        return 0;
    const bool is_forward = (flags & XSheetFinderFlags::FlagForwards) != 0;
    const int step = is_forward ? 1 : -1;
    const int begin =
        is_forward ? std::max(frame, inq_number()) : std::min(frame, next->inq_number());
    const int end = is_forward ? next->inq_number() + 1 : inq_number() - 1;
    NumericSubColumn* sub_column = inq_numeric_sub_column();
    double before = begin == end ? 0.0 : sub_column->inq_element(0, begin);
    for (int f = begin; f != end && (f - end) * step < 0; f += step) {
        const double now = sub_column->inq_element(0, f);
        if (has_crossed(before, now, value))
            return f;
        before = now;
    }
    return 0;
}

bool NumericKeyCell::load_finished_with_abort()
{
    const bool is_aborted = KeyCell::load_finished_with_abort();
    if (ratio_data)
        ratio_data->load_finished();
    return is_aborted;
}

void NumericKeyCell::set_is_ratioed(bool is_ratioed)
{
    note_change();
    if (!is_ratioed)
        ratio_data.reset();
    else if (!ratio_data)
        ratio_data = std::make_unique<RatioKeyCellData>(this);
    drop_inbetweens_around();
}

void NumericKeyCell::drop_inbetweens_around()
{
    drop_inbetweens();
    if (KeyCell* previous = inq_prev_key())
        previous->drop_inbetweens();
}

void NumericKeyCell::added_to_subcolumn(SubColumn* column)
{
    KeyCell::added_to_subcolumn(column);
    if (ratio_data)
        ratio_data->resume();
}

void NumericKeyCell::removed_from_subcolumn(SubColumn* column)
{
    KeyCell::removed_from_subcolumn(column);
    if (ratio_data)
        ratio_data->rest();
}

void NumericKeyCell::add_ratio_data(gsl::owner<RatioKeyCellData*> data)
{
    ratio_data.reset(data);
    if (ratio_data) {
        ratio_data->set_key(this);
        ratio_data->resume();
    }
    drop_inbetweens_around();
    if (inq_sub_column())
        key_changed();
}

gsl::owner<RatioKeyCellData*> NumericKeyCell::remove_ratio_data()
{
    gsl::owner<RatioKeyCellData*> data = ratio_data.release();
    if (data)
        data->set_key(nullptr); // it still hears of its source
    drop_inbetweens_around();
    if (inq_sub_column())
        key_changed();
    return data;
}
