#include "xsheet/sequence/hdr/RasterSeqCellData.h"

#include "kivlib/hdr/KIVStringList.h"
#include "kivlib/hdr/Record.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/KIVScene.h"
#include "scene/hdr/RasterAsset.h"
#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/store_control/hdr/LoadFindings.h"

// The base name is that of a class of long ago, which files still tell.
KIV_STORED_CLASS(RasterSeqCellData, 97, "DopingCellData");

namespace {
constexpr FormatVersions HAS_FILE_NAME = since(97);
constexpr int NO_ASSET = -1;

KIVAssetManager* inq_assets(const XSheet* sheet)
{
    return sheet && sheet->inq_scene() ? sheet->inq_scene()->inq_asset_manager() : nullptr;
}
} // namespace

RasterSeqCellData::RasterSeqCellData(const RasterSeqCellData& other)
    : CellData(other), asset_id(other.asset_id), asset(other.asset)
{
    if (other.file_name)
        file_name = std::make_unique<KIVString>(*other.file_name);
}

RasterSeqCellData::~RasterSeqCellData() = default;

template <class Record> void RasterSeqCellData::record(Record& r)
{
    r.value(asset_id);
    r.owned(file_name, HAS_FILE_NAME);
}

KIV_STORED_RECORD(RasterSeqCellData);

gsl::owner<CellData*> RasterSeqCellData::duplicate() const
{
    return new RasterSeqCellData(*this);
}

bool RasterSeqCellData::load_finished_with_abort()
{
    setup_assets(false);
    if (CellData::load_finished_with_abort())
        return true;
    return asset && asset->check_for_lost_file();
}

/// The sheet of a key that lies in one; null for all other data.
XSheet* RasterSeqCellData::inq_xsheet() const
{
    if (!inq_cell() || !inq_cell()->is_a_key())
        return nullptr;
    SubColumn* sub_column = static_cast<KeyCell*>(inq_cell())->inq_sub_column();
    return sub_column ? sub_column->inq_xsheet() : nullptr;
}

void RasterSeqCellData::setup_assets(bool notify)
{
    if (asset || !inq_assets(inq_xsheet()))
        return;
    if (asset_id > NO_ASSET)
        look_up_asset(notify);
    if (!asset)
        create_asset();
}

/// The asset manager has no asset of the tag that the key names.
void RasterSeqCellData::tell_lost_asset() const
{
    const KIVString path = static_cast<KeyCell*>(inq_cell())->inq_sub_column()->inq_header_path();
    KIVString finding = "The asset record has no image " + KIVString(asset_id, 0);
    if (file_name)
        finding += " (" + *file_name + ")";
    LoadFindings::add(finding + " of the column" + path);
}

void RasterSeqCellData::look_up_asset(bool notify)
{
    BaseSceneAsset* found =
        inq_assets(inq_xsheet())->lookup_asset(static_cast<unsigned long>(asset_id), RASTER_ASSET);
    asset = static_cast<RasterAsset*>(found);
    if (!asset) {
        tell_lost_asset();
        return;
    }
    if (asset->inq_has_changed()) {
        if (notify)
            inq_cell()->set_needs_saving();
        asset->set_has_changed(false);
    }
    set_path(asset->inq_local_path());
}

void RasterSeqCellData::create_asset()
{
    if (!file_name)
        return;
    BaseSceneAsset* created =
        inq_assets(inq_xsheet())->create_and_add_asset(*file_name, RASTER_ASSET);
    asset = static_cast<RasterAsset*>(created);
    asset_id = static_cast<int>(asset->inq_tag());
}

void RasterSeqCellData::bind_anew()
{
    asset = nullptr;
    asset_id = NO_ASSET;
    setup_assets(true);
    update_string();
}

void RasterSeqCellData::added_to_column()
{
    bind_anew();
}

void RasterSeqCellData::moved_to_sub_column()
{
    const KIVAssetManager* assets = inq_assets(inq_xsheet());
    const bool is_ours =
        assets && asset && asset_id > NO_ASSET &&
        assets->lookup_asset(static_cast<unsigned long>(asset_id), RASTER_ASSET) == asset;
    if (assets && !is_ours)
        bind_anew();
}

void RasterSeqCellData::set_file_name(const KIVString& path)
{
    set_path(path);
    bind_anew();
}

void RasterSeqCellData::set_asset(RasterAsset* new_asset)
{
    asset = new_asset;
    asset_id = asset ? static_cast<int>(asset->inq_tag()) : NO_ASSET;
    if (asset)
        set_path(asset->inq_local_path());
    update_string();
}

void RasterSeqCellData::set_path(const KIVString& path)
{
    file_name = std::make_unique<KIVString>(path);
}

void RasterSeqCellData::update_string()
{
    if (asset)
        set_string(asset->inq_user_name());
}

void RasterSeqCellData::get_dependencies(KIVStringList& files, bool) const
{
    if (file_name)
        files.add_to_end(*file_name, false);
}

void RasterSeqCellData::mark_used_assets()
{
    if (asset)
        asset->set_used_flag(true);
}
