#include "xsheet/ratio/hdr/RatioKeyCellData.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"
#include "xsheet/ratio/hdr/RatioSubColumnWatcher.h"
#include "xsheet/ratio/src/Raised.h"

#include <unordered_map>
#include <unordered_set>

KIV_STORED_CLASS(RatioKeyCellData, 128);

namespace {
constexpr FormatVersions HAS_UNIT_TYPE = since(128);
constexpr unsigned long RATIO_TYPES[] = {3, 11, 12, 13, 20, 21, 22};

bool are_equal(const Vector& a, const Vector& b)
{
    return std::ranges::equal(a.inq_elements(), b.inq_elements());
}

Vector inq_value_of(NumericKeyCell* key, int order)
{
    const CellData* data = key->inq_data();
    return data ? static_cast<const BaseNumericCellData*>(data)->inq_value() : Vector(order);
}
} // namespace

/// What one change of a column sets going. Links carry it to further links, by more and more ways
/// where columns follow each other in a chain, so they stand in a queue: each waits there once,
/// with all frames that reach it meanwhile. Columns that follow each other in a ring would go on
/// for ever; but no way to a link leads through a column twice, so no link has to answer more
/// often than there are columns.
class RatioKeyCellData::Change {
public:
    Change() { change_in_hand = this; }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change() { change_in_hand = nullptr; }

    void add(RatioKeyCellData* link, int first, int last)
    {
        Notice& notice = notices[link];
        notice.first = notice.is_waiting ? std::min(notice.first, first) : first;
        notice.last = notice.is_waiting ? std::max(notice.last, last) : last;
        if (!std::exchange(notice.is_waiting, true))
            queue.push_back(link);
    }

    /// The queue is left as it is: a link without a notice is passed over.
    void remove(const RatioKeyCellData* link) { notices.erase(link); }

    void serve()
    {
        for (std::size_t next = 0; next < queue.size(); ++next) { // it grows meanwhile
            const auto place = notices.find(queue[next]);
            if (place != notices.end() && std::exchange(place->second.is_waiting, false))
                answer(*queue[next], place->second);
        }
    }

private:
    struct Notice {
        int first = 0;
        int last = 0;
        bool is_waiting = false;
        std::size_t answers = 0;
    };

    void answer(RatioKeyCellData& link, Notice& notice)
    {
        columns.insert(link.inq_own_column());
        if (notice.answers++ < columns.size())
            link.answer_change(notice.first, notice.last);
    }

    std::vector<RatioKeyCellData*> queue;
    std::unordered_map<const RatioKeyCellData*, Notice> notices;
    std::unordered_set<const NumericSubColumn*> columns;
};

RatioKeyCellData::Change* RatioKeyCellData::change_in_hand = nullptr;

bool inq_valid_for_ratioing(unsigned long type)
{
    return std::ranges::find(RATIO_TYPES, type) != std::end(RATIO_TYPES);
}

RatioKeyCellData::RatioKeyCellData(NumericKeyCell* key)
    : ratio_value(key->inq_order(), 1.0), lock_value(inq_value_of(key, key->inq_order())),
      keycell(key), order(key->inq_order()), lock_frame(key->inq_number())
{
    if (const NumericSubColumn* sub_column = key->inq_numeric_sub_column())
        unit_type = sub_column->inq_unit_type();
}

RatioKeyCellData::RatioKeyCellData(const RatioKeyCellData& other, NumericKeyCell* key)
    : KIVObject(other), ratio_value(other.ratio_value), lock_value(other.lock_value), keycell(key),
      order(other.order), lock_frame(other.lock_frame), source_column(other.source_column),
      unit_type(other.unit_type)
{}

RatioKeyCellData::RatioKeyCellData(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader reader(stream);
    record(reader);
    order = ratio_value.size();
    if (lock_frame < -BaseCell::MOST_FRAMES || lock_frame > BaseCell::MOST_FRAMES)
        stream.set_error_state(KIVStream::BAD_DATA);
}

RatioKeyCellData::~RatioKeyCellData()
{
    if (change_in_hand)
        change_in_hand->remove(this);
}

template <class Record> void RatioKeyCellData::record(Record& r)
{
    r.embedded(ratio_value);
    r.embedded(lock_value);
    r.back_link(keycell);
    r.value(lock_frame);
    r.far_link(source_column);
    r.value(unit_type, HAS_UNIT_TYPE, KIV_UNIT_FIELDS);
}

void RatioKeyCellData::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

void RatioKeyCellData::load_finished()
{
    setup_watcher();
}

gsl::owner<RatioKeyCellData*> RatioKeyCellData::duplicate(NumericKeyCell* key) const
{
    return new RatioKeyCellData(*this, key);
}

NumericSubColumn* RatioKeyCellData::inq_own_column() const
{
    return keycell ? keycell->inq_numeric_sub_column() : nullptr;
}

void RatioKeyCellData::set_ratio_value(const Vector& value)
{
    const bool is_same = are_equal(ratio_value, value);
    ratio_value = value;
    if (!is_same)
        update_keycell();
}

void RatioKeyCellData::set_lock_value(const Vector& value)
{
    const bool is_same = are_equal(lock_value, value);
    lock_value = value;
    if (!is_same)
        update_keycell();
}

void RatioKeyCellData::set_lock_frame(int frame)
{
    const NumericSubColumn* own = inq_own_column();
    const int end = own ? own->inq_scene_length() : frame;
    lock_frame = std::max(std::min(frame, end), 1);
    if (keycell)
        keycell->drop_inbetweens_around();
}

void RatioKeyCellData::reset_lock_frame(int frame)
{
    const int old_frame = lock_frame;
    NumericSubColumn* own = inq_own_column();
    const Vector value = own ? own->inq_value(frame) : Vector(); // by the lock as it is
    set_lock_frame(frame);
    if (frame != old_frame && own)
        set_lock_value(value);
}

void RatioKeyCellData::set_source_column(NumericSubColumn* source)
{
    source_column = source;
    setup_watcher();
    if (keycell)
        keycell->drop_inbetweens_around();
}

// A watcher belongs to the column that it was made for, so each source gets a new one.
void RatioKeyCellData::setup_watcher()
{
    watcher.reset();
    if (!source_column)
        return;
    watcher = std::make_unique<KeyCellRatioSubColumnWatcher>(source_column, this);
    source_column->add_watcher(watcher.get());
}

void RatioKeyCellData::watcher_deleted()
{
    static_cast<void>(watcher.release());
}

void RatioKeyCellData::column_values_changed_in_range(int first, int last)
{
    if (change_in_hand) {
        change_in_hand->add(this, first, last);
        return;
    }
    Change change;
    change.add(this, first, last);
    change.serve();
}

void RatioKeyCellData::answer_change(int first, int last)
{
    if (is_resting) {
        has_missed_change = true;
        return;
    }
    update_keycell();
    if (NumericSubColumn* own = inq_own_column())
        own->tell_watchers_frame_range_changed(first, last);
}

void RatioKeyCellData::resume()
{
    is_resting = false;
    if (std::exchange(has_missed_change, false))
        update_keycell();
}

double RatioKeyCellData::inq_source(int i, int frame) const
{
    if (is_evaluating)
        return 0.0; // two columns follow each other
    const Raised evaluating(is_evaluating);
    return source_column->inq_element(i, frame);
}

double RatioKeyCellData::inq_key_offset(int i) const
{
    return lock_value.elem(i) - ratio_value.elem(i) * inq_source(i, lock_frame);
}

NumericKeyCell* RatioKeyCellData::inq_next_key() const
{
    return keycell ? static_cast<NumericKeyCell*>(keycell->inq_next_key()) : nullptr;
}

RatioKeyCellData::Span RatioKeyCellData::inq_case() const
{
    const NumericKeyCell* next = inq_next_key();
    if (!next || keycell->inq_mode() == IM_HOLD)
        return Span::HOLDS_OWN;
    const RatioKeyCellData* next_data = next->inq_ratio_data();
    return next_data && next_data->source_column ? Span::BLENDS_TO_RATIO : Span::BLENDS_TO_VALUE;
}

double RatioKeyCellData::inq_ratio_at_inbetween(int i, NumericInbetweenCell* cell) const
{
    if (!source_column)
        return 0.0;
    const double own = ratio_value.elem(i);
    if (inq_case() != Span::BLENDS_TO_RATIO)
        return own;
    const double f = cell->inq_ifactor();
    return (1.0 - f) * own + f * inq_next_key()->inq_ratio_data()->ratio_value.elem(i);
}

double RatioKeyCellData::inq_offset_at_inbetween(int i, NumericInbetweenCell* cell) const
{
    if (!source_column)
        return 0.0;
    const double own = inq_key_offset(i);
    const Span span = inq_case();
    if (span == Span::HOLDS_OWN)
        return own;
    NumericKeyCell* next = inq_next_key();
    const double target = span == Span::BLENDS_TO_RATIO
                              ? next->inq_ratio_data()->inq_key_offset(i)
                              : next->inq_own_element(i) - inq_source(i, next->inq_number());
    const double f = cell->inq_ifactor();
    return (1.0 - f) * own + f * target;
}

double RatioKeyCellData::calc_element(int i, NumericInbetweenCell* cell) const
{
    if (!source_column) {
        const NumericSubColumn* own = inq_own_column();
        return own ? own->inq_blank_value(i) : 0.0;
    }
    return inq_source(i, cell->inq_frame_number()) * inq_ratio_at_inbetween(i, cell) +
           inq_offset_at_inbetween(i, cell);
}

template <class Calc> Vector RatioKeyCellData::collect(Calc calc) const
{
    Vector elements(order);
    for (int i = 0; i < order; ++i)
        elements.elem(i) = calc(i);
    return elements;
}

namespace {
/// Null for what stands by itself.
RatioKeyCellData* inq_link_of(NumericInbetweenCell* cell)
{
    const auto* key = static_cast<NumericKeyCell*>(cell->inq_prev_key());
    return key ? key->inq_ratio_data() : nullptr;
}

/// What a column has on a frame, if it follows another column there and has no value yet.
NumericInbetweenCell* find_unmade(NumericSubColumn* column, int frame)
{
    auto* key = column ? static_cast<NumericKeyCell*>(
                             column->inq_key_cell_list()->find_cell_at_or_before(frame))
                       : nullptr;
    if (!key || !key->inq_is_ratioed())
        return nullptr; // a column that follows none is read without cells
    BaseCell* cell = key->inq_cell(frame);
    if (!cell || !cell->is_an_inbetween() || cell->inq_data_exists())
        return nullptr;
    auto* inbetween = static_cast<NumericInbetweenCell*>(cell);
    return inq_link_of(inbetween) ? inbetween : nullptr;
}
} // namespace

void RatioKeyCellData::add_unmade_sources(NumericInbetweenCell* cell, Waiting& waiting) const
{
    const auto add = [&waiting](NumericSubColumn* column, int frame) {
        NumericInbetweenCell* unmade = find_unmade(column, frame);
        if (unmade && !inq_link_of(unmade)->is_evaluating)
            waiting.push_back(unmade);
    };
    add(source_column, cell->inq_frame_number());
    add(source_column, lock_frame);
    const Span span = inq_case();
    NumericKeyCell* next = inq_next_key();
    if (span == Span::BLENDS_TO_RATIO)
        add(next->inq_ratio_data()->source_column, next->inq_ratio_data()->lock_frame);
    else if (span == Span::BLENDS_TO_VALUE)
        add(source_column, next->inq_number());
}

/// Columns may follow each other in a chain of any length, so its far end is worked out first, and
/// each value finds those that it needs. A link that waits for its sources is evaluating, as it is
/// while it reads them, so that columns in a ring come to an end.
void RatioKeyCellData::make_sources(NumericInbetweenCell* cell) const
{
    static bool is_making = false;
    if (is_making || is_evaluating)
        return;
    const Raised making(is_making);
    const Raised evaluating(is_evaluating);
    Waiting waiting;
    add_unmade_sources(cell, waiting);
    while (!waiting.empty()) {
        NumericInbetweenCell* last = waiting.back();
        const RatioKeyCellData& link = *inq_link_of(last);
        if (!last->inq_data_exists() && !std::exchange(link.is_evaluating, true)) {
            link.add_unmade_sources(last, waiting);
            continue;
        }
        link.is_evaluating = false;
        last->inq_data();
        waiting.pop_back();
    }
}

Vector RatioKeyCellData::inq_value(NumericInbetweenCell* cell) const
{
    make_sources(cell);
    return collect([&](int i) { return calc_element(i, cell); });
}

Vector RatioKeyCellData::inq_ratio(NumericInbetweenCell* cell) const
{
    return collect([&](int i) { return inq_ratio_at_inbetween(i, cell); });
}

Vector RatioKeyCellData::inq_lock_val(NumericInbetweenCell* cell) const
{
    return collect([&](int i) { return inq_offset_at_inbetween(i, cell); });
}

void RatioKeyCellData::update_keycell()
{
    auto* data = keycell ? static_cast<BaseNumericCellData*>(keycell->inq_data()) : nullptr;
    const NumericSubColumn* own = inq_own_column();
    if (!data || (!source_column && !own))
        return;
    for (int i = 0; i < order; ++i)
        data->set_element(i, source_column
                                 ? inq_source(i, keycell->inq_number()) * ratio_value.elem(i) +
                                       inq_key_offset(i)
                                 : own->inq_blank_value(i));
}

gsl::owner<KIVLinkedList*> RatioKeyCellData::inq_sub_column_list() const
{
    auto sources = std::make_unique<KIVLinkedList>();
    NumericSubColumn* own = inq_own_column();
    XSheet* sheet = own ? own->inq_xsheet() : nullptr;
    if (!sheet)
        return sources.release();
    for (const unsigned long type : RATIO_TYPES) {
        const std::unique_ptr<KIVLinkedList> of_type(sheet->inq_deep_sub_column_list(type));
        for (SubColumn* column : of_type->of<SubColumn>())
            sources->add(column);
    }
    return sources.release();
}
