#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"

#include "xsheet/sequence/hdr/RasterSeqCellData.h"

KIV_STORED_CLASS(RasterSeqKeyCell, -1);
KIV_STORED_CLASS(RasterSeqSubColumn, -1);

namespace {
/// Null if the key has none of this kind.
RasterSeqCellData* raster_data_of(BaseCell* cell)
{
    CellData* data = cell->inq_data();
    const bool is_raster = data && data->is_kind_of(RasterSeqCellData::inq_class_name_s());
    return is_raster ? static_cast<RasterSeqCellData*>(data) : nullptr;
}

template <class Use> void for_all_data(const SubColumn* sub_column, Use use)
{
    KeyCellIterator keys(sub_column);
    while (KeyCell* key = keys++)
        if (RasterSeqCellData* data = raster_data_of(key))
            use(*data);
}
} // namespace

gsl::owner<BaseCell*> RasterSeqKeyCell::duplicate() const
{
    return new RasterSeqKeyCell(*this);
}

gsl::owner<CellData*> RasterSeqKeyCell::create_data()
{
    return new RasterSeqCellData(this);
}

int RasterSeqKeyCell::inq_type() const
{
    return RasterSeqSubColumn::TYPE;
}

// A sub-column under construction, copied or read, is not yet one of images: its keys come to
// their assets later, when it lies in the sheet.
void RasterSeqKeyCell::set_sub_column(SubColumn* column)
{
    KeyCell::set_sub_column(column);
    if (!column || column->inq_type() != RasterSeqSubColumn::TYPE)
        return;
    if (RasterSeqCellData* data = raster_data_of(this))
        data->moved_to_sub_column();
}

void RasterSeqKeyCell::added_to_subcolumn(SubColumn* column)
{
    KeyCell::added_to_subcolumn(column);
    if (RasterSeqCellData* data = raster_data_of(this))
        data->moved_to_sub_column();
}

RasterSeqSubColumn::RasterSeqSubColumn(const RasterSeqSubColumn& other, bool flag)
    : SubColumn(other, flag)
{}

gsl::owner<SubColumn*> RasterSeqSubColumn::duplicate() const
{
    return new RasterSeqSubColumn(*this);
}

gsl::owner<KeyCell*> RasterSeqSubColumn::create_new_key_with_label(int new_label)
{
    return new RasterSeqKeyCell(this, -1, static_cast<unsigned>(new_label));
}

void RasterSeqSubColumn::added_to_column(Column* to)
{
    SubColumn::added_to_column(to);
    for_all_data(this, [](RasterSeqCellData& data) { data.added_to_column(); });
}

void RasterSeqSubColumn::get_dependencies(KIVStringList& files, bool flag)
{
    for_all_data(this, [&](RasterSeqCellData& data) { data.get_dependencies(files, flag); });
}

void RasterSeqSubColumn::mark_used_assets()
{
    for_all_data(this, [](RasterSeqCellData& data) { data.mark_used_assets(); });
}

int RasterSeqSubColumn::inq_highest_asset_id() const
{
    int highest = -1;
    for_all_data(this, [&](const RasterSeqCellData& data) {
        highest = std::max(highest, data.inq_asset_id());
    });
    return highest;
}
