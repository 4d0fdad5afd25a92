#include "xsheet/cell/hdr/BaseCell.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/XSheetFinderFlags.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

KIV_STORED_CLASS(BaseCell, -1);

namespace {
constexpr int IS_DIRTY = 1;

bool matches(const KIVString& held, const KIVString& wanted, int flags)
{
    const bool is_exact = (flags & XSheetFinderFlags::FlagExactMatch) != 0;
    if ((flags & XSheetFinderFlags::FlagCaseSensitive) != 0)
        return is_exact ? held == wanted : held.contains(wanted);
    return is_exact ? held.is_equal_no_case(wanted) : held.contains_no_case(wanted);
}
} // namespace

template <class Record> void BaseCell::record(Record& r)
{
    r.template value_as<long>(label);
    r.value(number);
    bool is_data_elsewhere = inq_save_separate_data();
    r.value(is_data_elsewhere);
    if (!is_data_elsewhere)
        r.owned(data);
}

BaseCell::BaseCell(KIVIStream& stream) : KIVObject(stream)
{
    RecordReader r(stream);
    record(r);
    if (number < -MOST_FRAMES || number > MOST_FRAMES)
        stream.set_error_state(KIVStream::BAD_DATA);
    if (data)
        data->set_cell(this);
}

void BaseCell::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter r(stream);
    record(r);
    set_just_saved();
}

BaseCell::BaseCell(const BaseCell& other)
    : KIVObject(other), data(other.data ? other.data->duplicate() : nullptr), number(other.number),
      label(other.label)
{
    if (data)
        data->set_cell(this);
}

BaseCell::~BaseCell() = default;

const KIVString& BaseCell::inq_save_directory() const
{
    static const KIVString nowhere;
    return nowhere;
}

gsl::owner<BaseCell*> BaseCell::duplicate() const
{
    return new BaseCell(*this);
}

CellData* BaseCell::inq_data()
{
    return data.get();
}

void BaseCell::data_created() {}

gsl::owner<CellData*> BaseCell::create_data()
{
    return new CellData(this);
}

void BaseCell::set_number(int n)
{
    number = n;
}

int BaseCell::inq_type() const
{
    return 1;
}

KeyCell* BaseCell::inq_next_key() const
{
    return nullptr;
}

KeyCell* BaseCell::inq_prev_key() const
{
    return nullptr;
}

bool BaseCell::is_a_key() const
{
    return false;
}

bool BaseCell::is_an_inbetween() const
{
    return false;
}

void BaseCell::set_needs_saving()
{
    if (!inq_xs_store_control()->update_dirty_flags())
        return;
    flags |= IS_DIRTY;
    const KeyCell* next_key = inq_next_key();
    const KeyCell* key = next_key ? next_key : inq_prev_key();
    if (key && key->inq_sub_column())
        key->inq_sub_column()->set_needs_saving();
}

void BaseCell::set_just_saved()
{
    flags = inq_xs_store_control()->clear_flags_after_save(flags);
}

bool BaseCell::inq_should_save_data() const
{
    return true;
}

bool BaseCell::inq_save_separate_data() const
{
    return false;
}

bool BaseCell::load_finished_with_abort()
{
    return data && data->load_finished_with_abort();
}

bool BaseCell::inq_can_compress_keys() const
{
    return false;
}

int BaseCell::find(const KIVString& text, int, int search_flags)
{
    const CellData* held = inq_data();
    const KIVString* string = held ? held->inq_string() : nullptr;
    if (!string || !matches(*string, text, search_flags))
        return 0;
    return number == 0 ? -1 : number; // 0 means that nothing was found
}

void BaseCell::ring_unring()
{
    if (CellData* ringed = inq_data())
        ringed->set_cell_ringed(!ringed->inq_cell_ringed());
}

void BaseCell::set_data(gsl::owner<CellData*> new_data)
{
    data.reset(new_data);
    if (data)
        data->set_cell(this);
    if (list)
        list->note_change();
}

KIVString BaseCell::inq_data_file() const
{
    return "Key_" + std::to_string(label) + ".celldata";
}

KIVString BaseCell::inq_full_path_data_file() const
{
    return inq_save_directory() + "/" + inq_data_file();
}

bool BaseCell::inq_needs_saving() const
{
    return inq_xs_store_control()->check_needs_saving_flags(flags);
}

bool BaseCell::compress_cell()
{
    if (!inq_save_separate_data() || inq_needs_saving())
        return false;
    set_data(nullptr);
    return true;
}
