#include "scene/hdr/KIVScene.h"

#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "coversheet/lib/hdr/KIVCamera.h"
#include "coversheet/lib/hdr/KIVFieldChart.h"
#include "kivlib/hdr/BaseFileFinder.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "kivlib/hdr/KIVDateAndTime.h"
#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/entry_point.h"
#include "kivlib/hdr/file_operations.h"
#include "scene/hdr/KIVAssetManager.h"
#include "scene/hdr/KIVSceneWatcher.h"
#include "scene/hdr/TransitionalAssets.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/sequence/hdr/RasterSeqSubColumn.h"
#include "xsheet/store_control/hdr/LoadFindings.h"
#include "xsheet/store_control/hdr/SceneParts.h"
#include "xsheet/store_control/hdr/StoreFile.h"

KIV_STORED_CLASS(KIVScene, -1);

namespace {
constexpr int IS_DIRTY = 1;
constexpr int IDLE = XSheetStoreController::DIRTY_FLAGS_LIVE;
} // namespace

gsl::owner<KIVScene*> KIVScene::inq_unsetup_scene()
{
    return new KIVScene;
}

KIVScene::KIVScene()
{
    tw_scene_will_create();
    xsheet = std::make_unique<XSheet>(this);
    graph = std::make_unique<CNodeGraph>(xsheet.get());
    cover_sheet = std::make_unique<CoverSheet>(this);
    asset_manager = std::make_unique<KIVAssetManager>();
    camera = std::make_unique<KIVCamera>(this);
    field_chart = std::make_unique<KIVFieldChart>(this);
    tw_scene_was_created();
}

KIVScene::~KIVScene()
{
    tw_scene_will_delete();
    graph.reset(); // its nodes let go of the sheet's columns
    xsheet.reset();
    cover_sheet.reset();
    asset_manager.reset();
    camera.reset();
    field_chart.reset();
    tw_scene_was_deleted();
}

gsl::owner<KIVScene*> KIVScene::load_from_file(const KIVString& folder,
                                               gsl::owner<BaseFileFinder*> finder, bool flag)
{
    XSheetStoreController& store = *inq_xs_store_control();
    set_file_finder(finder);
    store.clear_failed();
    store.set_mode_flags(XSheetStoreController::LOADING | IDLE);
    KIVScene* scene = without_exceptions<KIVScene*>(nullptr, [&] { return load(folder, flag); });
    store.release_lock();
    delete_file_finder();
    store.set_mode_flags(IDLE);
    store.clear_failed();
    return scene;
}

gsl::owner<KIVScene*> KIVScene::load(const KIVString& folder, bool flag)
{
    XSheetStoreController& store = *inq_xs_store_control();
    const KIVString place = store.inq_lasting_path(folder);
    store.open_folder(place, 0);
    std::unique_ptr<KIVScene> scene;
    if (lock_file(folder)) {
        scene = read_undisturbed();
        if (store.clear_failed())
            scene.reset();
        unlock_file(folder);
    }
    if (!scene)
        return nullptr;
    scene->current_file = folder.str().starts_with('/') ? folder : place;
    if (scene->load_finished_with_abort(flag))
        return nullptr;
    if (inq_file_finder() && inq_file_finder()->files_were_replaced())
        scene->xsheet->set_needs_saving();
    return scene.release();
}

/// Where another program could save the scene meanwhile, it is read again if that happened.
std::unique_ptr<KIVScene> KIVScene::read_undisturbed()
{
    constexpr int MOST_TRIES = 20;
    XSheetStoreController& store = *inq_xs_store_control();
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        store.begin_load();
        std::unique_ptr<KIVScene> scene = LoadFile(store, SCENE_CONTENTS).read<KIVScene>();
        if (store.end_load() || store.inq_has_failed())
            return scene;
    }
    store.set_failed("The scene is being saved by another program.");
    return nullptr;
}

namespace {
/// While this lives, nodes read tag positions only where the folder says that it holds them.
class TagPositions {
public:
    explicit TagPositions(XSheetStoreController& store)
    {
        CNode::read_tags_pos_info = store.inq_file_exists(DRAWING_WINDOW_TAGS);
    }
    TagPositions(const TagPositions&) = delete;
    TagPositions& operator=(const TagPositions&) = delete;
    ~TagPositions() { CNode::read_tags_pos_info = true; }
};
} // namespace

KIVScene::KIVScene(KIVIStream& stream) : KIVObject(stream)
{
    XSheetStoreController& store = *inq_xs_store_control();
    tw_scene_will_load(&store);
    read_parts(store);
    tw_scene_was_loaded(&store);
}

void KIVScene::read_parts(XSheetStoreController& store)
{
    xsheet = LoadFile(store, XSHEET_PART).read<XSheet>();
    cover_sheet = LoadFile(store, COVER_SHEET_PART).read<CoverSheet>();
    {
        const TagPositions positions(store);
        graph = LoadFile(store, GRAPH_PART).read<CNodeGraph>();
    }
    if (store.is_okay())
        asset_manager.reset(TransitionalAssets::load_asset_manager(&store));
    remember_parts();
    camera = std::make_unique<KIVCamera>(this);
    field_chart = std::make_unique<KIVFieldChart>(this);
}

namespace {
/// What keys name by a tag that the record has lost must not become the next new asset.
void reserve_tags_of_keys(XSheet& sheet, KIVAssetManager& assets)
{
    const std::unique_ptr<KIVLinkedList> columns(
        sheet.inq_deep_sub_column_list(RasterSeqSubColumn::TYPE));
    for (const RasterSeqSubColumn* column : columns->of<RasterSeqSubColumn>())
        if (const int tag = column->inq_highest_asset_id(); tag >= 0)
            assets.reserve_tag(RASTER_ASSET, static_cast<unsigned long>(tag));
}
} // namespace

bool KIVScene::load_finished_with_abort(bool flag)
{
    const LoadFindings findings;
    reserve_tags_of_keys(*xsheet, *asset_manager);
    if (xsheet->load_finished_with_abort(this))
        return true;
    cover_sheet->just_loaded_into(this);
    const bool abort = graph->load_finished_with_abort(xsheet.get(), flag);
    tw_scene_fully_loaded(inq_xs_store_control());
    if (!abort)
        findings.tell(current_file);
    if (!findings.inq_all().empty())
        xsheet->set_needs_saving(); // its file names what it no longer has
    return abort;
}

bool KIVScene::save_to_file(const KIVString& folder, bool save_all, bool update_flags,
                            bool save_as_copy)
{
    XSheetStoreController& store = *inq_xs_store_control();
    const bool has_changed = xsheet->inq_needs_saving() || cover_sheet->inq_needs_saving();
    store.set_mode_flags((update_flags ? XSheetStoreController::DIRTY_FLAGS_LIVE : 0) |
                         (save_all ? XSheetStoreController::SAVE_ALL : 0));
    store.check_disc_space();
    store.set_tilde_saving_enabled(true);
    const bool is_saved = without_exceptions(false, [&] { return save(folder, save_as_copy); }) ||
                          store.inq_is_committed();
    if (!is_saved || (save_as_copy && has_changed))
        stored_parts = {}; // flags may be cleared, though the scene's own folder has nothing new
    store.end_save();
    store.clear_failed();
    store.set_mode_flags(IDLE);
    return is_saved;
}

bool KIVScene::save(const KIVString& folder, bool save_as_copy)
{
    XSheetStoreController& store = *inq_xs_store_control();
    const KIVString place = store.inq_lasting_path(folder);
    const bool is_written = !lock_file(folder) || write_files(place);
    if (store.clear_failed() || !is_written)
        return false;
    if (store.inq_file_exists(DRAWING_WINDOW_TAGS))
        store.delete_file(DRAWING_WINDOW_TAGS);
    if (!save_as_copy) {
        current_file = folder.str().starts_with('/') ? folder : place;
        remember_parts();
        set_just_saved();
    }
    return true;
}

// Without a stream tilde saving stays on until the next save sets it afresh.
bool KIVScene::write_files(const KIVString& folder)
{
    XSheetStoreController& store = *inq_xs_store_control();
    store.open_folder(folder, 1);
    store.begin_save();
    SaveFile file(store, SCENE_CONTENTS);
    KIVOStream* stream = file.inq_stream();
    if (stream) {
        stream->insert_with_class_hdr(this);
        file.finish();
        store.save_finished();
        store.set_tilde_saving_enabled(false);
    }
    unlock_file(folder);
    return stream != nullptr;
}

void KIVScene::remember_parts()
{
    stored_parts = {inq_file_facts(XSHEET_PART), inq_file_facts(COVER_SHEET_PART)};
}

namespace {
/// Whether a part that has not changed is to be written all the same: the folder holds another one
/// or none, or an earlier save has left its own.
bool is_due(const FileFacts& stored, const KIVString& part)
{
    return !stored.are_of(part) || inq_xs_store_control()->inq_part_awaits_move(part);
}
} // namespace

void KIVScene::storer(KIVOStream& stream)
{
    XSheetStoreController& store = *inq_xs_store_control();
    if (store.is_okay()) {
        tw_scene_will_save(&store);
        KIVObject::storer(stream);
    }
    if (store.is_okay() && (xsheet->inq_needs_saving() || is_due(stored_parts.xsheet, XSHEET_PART)))
        save_object(store, XSHEET_PART, xsheet.get());
    if (store.is_okay() &&
        (cover_sheet->inq_needs_saving() || is_due(stored_parts.cover_sheet, COVER_SHEET_PART)))
        save_object(store, COVER_SHEET_PART, cover_sheet.get());
    save_object(store, GRAPH_PART, graph.get());
    save_assets(store);
    const std::unique_ptr<KIVDLLUsageList> usage(make_dll_usage_list());
    save_object(store, DLL_USAGE_PART, usage.get());
    if (store.is_okay())
        tw_scene_was_saved(&store);
}

/// The sweep runs whether or not anything failed.
void KIVScene::save_assets(XSheetStoreController& store)
{
    asset_manager->mark_all_unused();
    mark_used_assets();
    asset_manager->remove_unused_assets();
    if (store.is_okay())
        TransitionalAssets::save_asset_manager(asset_manager.get(), &store);
}

void KIVScene::mark_used_assets()
{
    if (xsheet)
        xsheet->mark_used_assets();
    if (graph)
        graph->mark_used_assets();
}

gsl::owner<KIVDLLUsageList*> KIVScene::make_dll_usage_list() const
{
    auto* list = new KIVDLLUsageList;
    graph->record_dll_usage(list);
    return list;
}

int KIVScene::inq_scene_length() const
{
    return xsheet ? xsheet->inq_scene_length() : 0;
}

void KIVScene::get_dependencies(KIVStringList& list, bool flag)
{
    if (xsheet)
        xsheet->get_dependencies(list, flag);
}

bool KIVScene::lock_file(const KIVString&)
{
    return true;
}

bool KIVScene::unlock_file(const KIVString&)
{
    return true;
}

void KIVScene::set_needs_saving()
{
    if (inq_xs_store_control()->update_dirty_flags())
        scene_flags |= IS_DIRTY;
}

bool KIVScene::inq_needs_saving()
{
    return inq_xs_store_control()->check_needs_saving_flags(scene_flags) ||
           (xsheet && xsheet->inq_needs_saving()) ||
           (cover_sheet && cover_sheet->inq_needs_saving()) || inq_tw_scene_needs_saved();
}

void KIVScene::set_just_saved()
{
    scene_flags = inq_xs_store_control()->clear_flags_after_save(scene_flags);
    if (xsheet)
        xsheet->set_just_saved();
    if (cover_sheet)
        cover_sheet->set_just_saved();
}

const KIVString& KIVScene::inq_scratch_file() const
{
    static KIVString scratch_file;
    std::string name = KIVFile(current_file).get_file().str(); // which drops slashes at the end
    if (name.empty())
        name = "unnamed.scene";
    std::replace(name.begin(), name.end(), ' ', '_');
    const KIVDateAndTime now;
    scratch_file = inq_kiv_scratch_directory();
    scratch_file.append_path(now.inq_date().inq_date_string(KIV_DATE_FILE_NAME) + "+" +
                             now.inq_time().inq_time_string(KIV_TIME_FILE_NAME) + "+" + name);
    return scratch_file;
}
