#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include "coversheet/lib/hdr/CoverSheet.h"
#include "curveslib/hdr/Fairing.h"
#include "kivlib/hdr/KIVDefaults.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/node/hdr/SubColPrefs.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericInbetweenCell.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/numeric/src/NumericSpans.h"
#include "xsheet/ratio/hdr/RatioColumnData.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"

#include <optional>
#include <unordered_set>

KIV_STORED_CLASS(NumericSubColumn, 127);

namespace {
constexpr FormatVersions HAS_RATIO_COLUMN = between(82, 126);
constexpr FormatVersions HAS_DEFAULTS = since(108);
constexpr FormatVersions HAS_POLICY = since(110);
constexpr FormatVersions HAS_RATIO_LINK = between(110, 116);

constexpr double LOWEST = -10000000000.0;
constexpr double HIGHEST = 10000000000.0;
constexpr int MOST_ELEMENTS = 10000; // in a file
constexpr double NO_SCENE_PEG_OFFSET = 5000.0;
constexpr double NO_SCENE_ASPECT_RATIO = 1.3714285714285714;

constexpr double SAME_VALUE = 0.000001;
constexpr double HANDLE_LENGTH = 0.1; // of the span from point to point

/// Null for a sub-column that is in no scene yet.
const CoverSheet* find_cover_sheet(NumericSubColumn& column)
{
    const XSheet* sheet = column.inq_xsheet();
    return sheet && sheet->inq_scene() ? sheet->inq_scene()->inq_cover_sheet() : nullptr;
}

BaseNumericCellData* inq_data_of(BaseCell* cell)
{
    return cell ? static_cast<BaseNumericCellData*>(cell->inq_data()) : nullptr;
}

/// A damaged file can hold keys of any kind.
bool is_numeric_key(KeyCell* key)
{
    CellData* data = key->inq_data();
    return object_cast<NumericKeyCell>(key) && (!data || object_cast<BaseNumericCellData>(data));
}

/// What stands on a frame between a ratioed key and the next one.
struct RatioedPlace {
    NumericSubColumn* source; // not owned
    Vector ratio;
    Vector value;
};

std::optional<RatioedPlace> find_ratioed_place(BaseCell* cell)
{
    if (!cell || !cell->is_an_inbetween())
        return std::nullopt;
    const RatioKeyCellData* followed =
        static_cast<NumericKeyCell*>(cell->inq_prev_key())->inq_ratio_data();
    if (!followed)
        return std::nullopt;
    auto* inbetween = static_cast<NumericInbetweenCell*>(cell);
    return RatioedPlace{followed->inq_source_column(), followed->inq_ratio(inbetween),
                        followed->inq_value(inbetween)};
}

void lock_at(const RatioedPlace& place, RatioKeyCellData& data)
{
    data.set_ratio_value(place.ratio);
    data.set_lock_value(place.value);
}

FairingCP::Place handle_towards(const FairingCP::Place& from, const FairingCP::Place& to)
{
    const double rise = to.height - from.height;
    return {HANDLE_LENGTH * (to.time - from.time),
            std::abs(rise) < SAME_VALUE ? 0.0 : HANDLE_LENGTH * rise};
}

void add_handles(Fairing& fairing)
{
    for (int i = 1; i < fairing.inq_control_point_count(); ++i) {
        FairingCP* from = fairing.inq_control_point(i - 1);
        FairingCP* to = fairing.inq_control_point(i);
        from->after = handle_towards(from->point, to->point);
        to->before = handle_towards(to->point, from->point);
    }
}
} // namespace

NumericSubColumn::NumericSubColumn(int order)
    : order(std::max(order, 0)), unit_type(static_cast<KIVUnitType>(KIVDefaults::inq_default(
                                     "NumericUnitType", static_cast<int>(KIV_UNIT_FIELDS)))),
      precision(KIVDefaults::inq_default("NumericPrecision", 2)),
      policy(std::make_unique<NormalNumericColumnPolicy>(this)), minimum_values(order, LOWEST),
      maximum_values(order, HIGHEST), default_values(order)
{
    init_unit_handler();
}

NumericSubColumn::NumericSubColumn(const NumericSubColumn& other, bool)
    : SubColumn(other), order(other.order), unit_type(other.unit_type), precision(other.precision),
      policy(other.policy ? other.policy->duplicate(this) : nullptr), ratioed(other.ratioed),
      minimum_values(other.minimum_values), maximum_values(other.maximum_values),
      default_values(other.default_values)
{
    if (other.ratio_column_data) {
        ratio_column_data.reset(other.ratio_column_data->duplicate(this));
        ratio_column_data->setup_watcher();
    }
    init_unit_handler();
}

NumericSubColumn::NumericSubColumn(KIVIStream& stream) : SubColumn(stream)
{
    RecordReader reader(stream);
    record(reader);
    if (order < 0 || order > MOST_ELEMENTS) {
        stream.set_error_state(KIVStream::BAD_COUNT);
        order = 0;
    }
    if (!HAS_DEFAULTS.hold(stream.inq_version()))
        default_values = Vector(order);
    if (policy)
        policy->set_sub_column(this);
    else
        policy = std::make_unique<NormalNumericColumnPolicy>(this);
    if (ratio_column_data)
        ratio_column_data->set_sub_column(this);
    init_unit_handler();
}

NumericSubColumn::~NumericSubColumn()
{
    ratio_column_data.reset();
    policy.reset();
}

template <class Record> void NumericSubColumn::record(Record& r)
{
    r.embedded(minimum_values);
    r.embedded(maximum_values);
    r.value(order);
    r.value(precision);
    r.value(unit_type);
    r.value(ratioed, HAS_RATIO_COLUMN);
    r.owned(ratio_column_data, HAS_RATIO_COLUMN);
    r.embedded(default_values, HAS_DEFAULTS);
    r.owned(policy, HAS_POLICY);
    r.dropped_int(HAS_RATIO_LINK);
    r.template dropped_link<NumericSubColumn>(HAS_RATIO_LINK);
}

void NumericSubColumn::storer(KIVOStream& stream)
{
    Base::storer(stream);
    RecordWriter writer(stream);
    record(writer);
}

// A new sub-column lies in no scene, and the scene of one that is read may not be there yet.
void NumericSubColumn::init_unit_handler()
{
    unit_handler = std::make_unique<KIVDefaultUnitHandler>();
    unit_handler->set_unit_offset(NO_SCENE_PEG_OFFSET);
    unit_handler->set_default_unit(inq_unit_type());
    unit_handler->set_precision(inq_precision());
    unit_handler->set_aspect_ratio(NO_SCENE_ASPECT_RATIO);
}

void NumericSubColumn::take_units_of_scene()
{
    const CoverSheet* cover_sheet = find_cover_sheet(*this);
    if (!cover_sheet)
        return;
    unit_handler->set_unit_offset(inq_a_peg_offset());
    unit_handler->set_aspect_ratio(cover_sheet->inq_field_chart_ratio());
}

void NumericSubColumn::init_units(const char* unit_key, KIVUnitType unit, const char* precision_key)
{
    unit_type =
        static_cast<KIVUnitType>(KIVDefaults::inq_default(unit_key, static_cast<int>(unit)));
    precision = KIVDefaults::inq_default(precision_key, precision);
    init_unit_handler();
}

double NumericSubColumn::inq_a_peg_offset()
{
    const CoverSheet* cover_sheet = find_cover_sheet(*this);
    return cover_sheet ? cover_sheet->inq_unit_offset() : NO_SCENE_PEG_OFFSET;
}

Vector NumericSubColumn::with_element(Vector values, int i, double value)
{
    values.elem(i) = value;
    return values;
}

void NumericSubColumn::set_unit_type(KIVUnitType type)
{
    unit_type = type;
    unit_handler->set_default_unit(type);
    set_needs_saving();
}

void NumericSubColumn::set_precision(int places)
{
    precision = places;
    unit_handler->set_precision(places);
    set_needs_saving();
}

void NumericSubColumn::set_policy(gsl::owner<NumericColumnPolicy*> new_policy)
{
    policy.reset(new_policy);
    inq_key_cell_list()->note_change();
}

gsl::owner<KeyCell*> NumericSubColumn::create_new_key_with_label(int new_label)
{
    return new NumericKeyCell(this, -1, static_cast<unsigned>(new_label));
}

double NumericSubColumn::inq_element(int element, int frame)
{
    if (!inq_first_key())
        return inq_blank_value(element);
    if (auto* spans = static_cast<NumericSpans*>(inq_read_table()))
        if (const std::optional<double> value = spans->read(element, frame))
            return *value;
    return work_out_element(element, frame);
}

/// Keys that are read again and again without a change get a table.
void NumericSubColumn::note_read()
{
    std::unique_ptr<ReadTable>& table = inq_kept_read_table();
    if (!table)
        table = std::make_unique<NumericSpans>();
    if (table->made_at != inq_key_cell_list()->inq_change_count())
        static_cast<NumericSpans&>(*table).note_read(*this);
}

/// The key and the offset behind it where a straight blend stands on the frame, which needs no
/// cell unless somebody has made one. Null elsewhere.
NumericKeyCell* NumericSubColumn::find_straight_key(int frame, int* offset)
{
    note_read();
    auto* key = static_cast<NumericKeyCell*>(inq_key_cell_list()->find_cell_at_or_before(frame));
    if (!key)
        return nullptr;
    *offset = frame - key->inq_number();
    const bool is_behind = *offset > 0 || Fairing::inq_half_frame();
    return is_behind && *offset <= key->inq_interp_len() && key->goes_straight() ? key : nullptr;
}

double NumericSubColumn::work_out_element(int element, int frame)
{
    int offset = 0;
    NumericKeyCell* key = find_straight_key(frame, &offset);
    if (key && element >= 0 && element < order)
        return key->blend_with_next(element, key->inq_ifactor(offset));
    const BaseNumericCellData* data = inq_data_of(inq_cell(frame));
    return data ? data->inq_element(element) : inq_blank_value(element);
}

Vector NumericSubColumn::inq_value(int frame)
{
    Vector value(order);
    return read_value(frame, value) ? value : work_out_value(frame);
}

/// From the table. False if it does not tell all of the value.
bool NumericSubColumn::read_value(int frame, Vector& value)
{
    auto* spans = static_cast<NumericSpans*>(inq_read_table());
    for (int i = 0; spans && i < order; ++i) {
        const std::optional<double> element = spans->read(i, frame);
        if (!element)
            return false;
        value.elem(i) = *element;
    }
    return spans;
}

Vector NumericSubColumn::work_out_value(int frame)
{
    int offset = 0;
    NumericKeyCell* key = find_straight_key(frame, &offset);
    if (const BaseNumericCellData* data = key ? nullptr : inq_data_of(inq_cell(frame)))
        return data->inq_value();
    const double factor = key ? key->inq_ifactor(offset) : 0.0;
    Vector value(order);
    for (int i = 0; i < order; ++i)
        value.elem(i) = key ? key->blend_with_next(i, factor) : inq_blank_value(i);
    return value;
}

// The easing is cut in two before the new key comes in, so what stands there is asked before.
KeyCell* NumericSubColumn::make_key(int frame)
{
    const std::optional<RatioedPlace> place = find_ratioed_place(inq_cell(frame));
    auto* key = static_cast<NumericKeyCell*>(SubColumn::make_key(frame));
    if (place && key->inq_is_ratioed())
        lock_at(*place, *key->inq_ratio_data());
    return key;
}

// A key that is dropped between a ratioed key and the next one goes on following.
void NumericSubColumn::insert_key(gsl::owner<KeyCell*> key, int frame)
{
    if (const std::optional<RatioedPlace> place = find_ratioed_place(inq_cell(frame))) {
        auto* numeric_key = static_cast<NumericKeyCell*>(key);
        key->set_sub_column(this); // it says how many elements follow
        key->set_number(frame);    // the value is worked out for this frame already
        numeric_key->set_is_ratioed(true);
        RatioKeyCellData* data = numeric_key->inq_ratio_data();
        data->set_lock_frame(frame);
        data->set_source_column(place->source);
        lock_at(*place, *data);
    }
    SubColumn::insert_key(key, frame);
}

bool NumericSubColumn::load_finished_with_abort()
{
    bool are_numeric = true;
    inq_key_cell_list()->for_each([&](BaseCell* key) {
        are_numeric = are_numeric && is_numeric_key(static_cast<KeyCell*>(key));
    });
    if (!are_numeric)
        return true;
    const bool is_aborted = SubColumn::load_finished_with_abort();
    take_units_of_scene();
    if (ratio_column_data)
        ratio_column_data->load_finished();
    if (policy)
        policy->load_finished();
    return is_aborted;
}

void NumericSubColumn::calc_min_and_max_values(double* min, double* max)
{
    *min = 1000000.0;
    *max = 0.0;
    if (order != 1)
        return;
    for (KeyCell* key = inq_first_key(); key; key = key->inq_next_key()) {
        const double value = static_cast<NumericKeyCell*>(key)->inq_own_element(0);
        *min = std::min(*min, value);
        *max = std::max(*max, value);
    }
}

gsl::owner<Fairing*> NumericSubColumn::extract_column_fairing()
{
    if (order != 1)
        return nullptr;
    std::vector<double> values;
    for (KeyCell* key = inq_first_key(); key; key = key->inq_next_key())
        values.push_back(static_cast<NumericKeyCell*>(key)->inq_own_element(0));
    return make_fairing_through(values);
}

gsl::owner<Fairing*> NumericSubColumn::make_fairing_through(std::span<const double> values) const
{
    if (values.size() < 2)
        return nullptr;
    const int start = inq_first_key()->inq_number();
    const int frames = inq_last_key()->inq_number() - start;
    const double rise = values.back() - values.front();
    auto fairing = std::make_unique<Fairing>(frames - 1);
    fairing->create_empty_cps(static_cast<int>(values.size()));
    const KeyCell* key = inq_first_key();
    for (std::size_t i = 0; i < values.size(); ++i, key = key->inq_next_key()) {
        const double gone = values[i] - values.front();
        fairing->inq_control_point(static_cast<int>(i))->point = {
            double(key->inq_number() - start) / std::max(frames, 1),
            std::abs(rise) < SAME_VALUE ? 0.0 : gone / rise};
    }
    add_handles(*fairing);
    return fairing.release();
}

gsl::owner<SubColPrefs*> NumericSubColumn::create_preferences_object()
{
    return new NumericSubColPrefs(this);
}

void NumericSubColumn::apply_preferences_object(SubColPrefs* prefs)
{
    const auto* numeric = object_cast<NumericSubColPrefs>(prefs);
    if (!numeric)
        return;
    set_unit_type(numeric->inq_units());
    set_precision(numeric->inq_precision());
}

KIVString NumericSubColumn::inq_summary()
{
    const double value = inq_element(0, 1);
    const KIVString text = is_y_column(0) ? unit_handler->y_to_units(value, is_angle_column())
                                          : unit_handler->x_to_units(value, is_angle_column());
    return SubColumn::inq_summary() + text;
}

bool NumericSubColumn::inq_is_ratio_looped(NumericSubColumn* other)
{
    if (!other)
        return false;
    std::vector<NumericSubColumn*> reached{this};
    std::unordered_set<const NumericSubColumn*> known{this};
    for (std::size_t i = 0; i < reached.size(); ++i)
        for (KeyCell* key = reached[i]->inq_first_key(); key; key = key->inq_next_key()) {
            const RatioKeyCellData* ratio = static_cast<NumericKeyCell*>(key)->inq_ratio_data();
            NumericSubColumn* source = ratio ? ratio->inq_source_column() : nullptr;
            if (source == other)
                return true;
            if (source && known.insert(source).second)
                reached.push_back(source);
        }
    return false;
}

gsl::owner<KIVLinkedList*> NumericSubColumn::inq_keys_ratioed_to_this()
{
    auto keys = std::make_unique<KIVLinkedList>();
    XSheet* sheet = inq_xsheet();
    const std::unique_ptr<KIVLinkedList> columns(sheet ? sheet->inq_deep_sub_column_list()
                                                       : new KIVLinkedList);
    for (SubColumn* member : columns->of<SubColumn>()) {
        const NumericSubColumn* column = object_cast<NumericSubColumn>(member);
        for (KeyCell* key = column ? column->inq_first_key() : nullptr; key;
             key = key->inq_next_key()) {
            const RatioKeyCellData* ratio = static_cast<NumericKeyCell*>(key)->inq_ratio_data();
            if (ratio && ratio->inq_source_column() == this)
                keys->add(key);
        }
    }
    return keys.release();
}

void NumericSubColumn::convert_ratio_column_to_key_based()
{
    if (!ratioed || !ratio_column_data)
        return;
    inq_key_cell_list()->delete_all_cells();
    auto* key = static_cast<NumericKeyCell*>(make_key(1));
    key->set_is_ratioed(true);
    Vector lock_value(order);
    for (int i = 0; i < order; ++i)
        lock_value.elem(i) = ratio_column_data->calc_element(i, 1);
    RatioKeyCellData* data = key->inq_ratio_data();
    data->set_source_column(ratio_column_data->inq_other_sub_column());
    data->set_ratio_value(Vector(order, ratio_column_data->inq_mult_constant()));
    data->set_lock_value(lock_value);
    data->set_lock_frame(1);
    data->update_keycell();
    ratioed = false;
    ratio_column_data.reset();
}
