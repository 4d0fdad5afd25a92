#include "xsheet/cell/hdr/CellData.h"

#include "kivlib/hdr/Record.h"
#include "xsheet/cell/hdr/KeyCell.h"
#include "xsheet/column/hdr/SubColumn.h"

KIV_STORED_CLASS(CellData, 118);

namespace {
constexpr FormatVersions HAS_RING = since(118);
}

template <class Record> void CellData::record(Record& r)
{
    r.owned(string);
    r.back_link(cell);
    r.value(cell_ringed, HAS_RING);
}

KIV_STORED_RECORD(CellData);

CellData::CellData(const CellData& other)
    : KIVObject(other), cell(nullptr),
      string(other.string ? std::make_unique<KIVString>(*other.string) : nullptr),
      cell_ringed(other.inq_cell_ringed())
{}

gsl::owner<CellData*> CellData::duplicate() const
{
    return new CellData(*this);
}

bool CellData::load_finished_with_abort()
{
    return false;
}

KIVString* CellData::inq_string() const
{
    return string.get();
}

void CellData::set_string(const KIVString& text)
{
    if (string)
        *string = text;
    else
        string = std::make_unique<KIVString>(text);
    set_cell_needs_saving();
}

bool CellData::inq_cell_ringed() const
{
    return cell_ringed;
}

void CellData::set_cell_ringed(bool ringed)
{
    if (cell_ringed == ringed)
        return;
    cell_ringed = ringed;
    set_cell_needs_saving();
}

void CellData::set_cell_needs_saving()
{
    if (cell)
        cell->set_needs_saving();
}

void CellData::data_changed()
{
    if (!cell || !cell->is_a_key())
        return;
    auto* key = static_cast<KeyCell*>(cell);
    SubColumn* sub_column = key->inq_sub_column();
    if (!sub_column)
        return;
    key->set_needs_saving();
    sub_column->fully_dirty_inbetweens_around(key);
    sub_column->tell_watchers_frame_changed(key->inq_number());
}
