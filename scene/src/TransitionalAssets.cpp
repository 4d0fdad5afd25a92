#include "scene/hdr/TransitionalAssets.h"

#include "kivlib/hdr/KIVFileReference.h"
#include "scene/hdr/KIVAssetManager.h"
#include "xsheet/store_control/hdr/SceneParts.h"
#include "xsheet/store_control/hdr/StoreFile.h"

namespace {
/// False if two assets have one tag, or one has a tag that can't be.
bool import_references(KIVAssetManager& manager, const KIVFile& folder)
{
    bool is_sound = true;
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind)
        for (KIVFileReferenceListIter i(folder.inq_reference_list_value(ASSET_KIND_NAMES[kind]));
             i.ok(); i.advance())
            is_sound &= manager.import_asset(i.inq_target(), kind,
                                             static_cast<unsigned long>(long{i.inq_tag()}));
    return is_sound;
}

std::unique_ptr<KIVAssetManager> load_record(XSheetStoreController& store)
{
    auto manager = std::make_unique<KIVAssetManager>();
    const LoadFile file(store, ASSET_PART);
    if (!file.inq_stream())
        return manager;
    KIVFile folder(*store.inq_root_folder());
    folder.extract_kvd(*file.inq_stream());
    if (!import_references(*manager, folder))
        file.inq_stream()->set_error_state(KIVStream::BAD_DATA);
    return manager;
}

KIVFileReferenceList list_references(const KIVAssetManager& manager, const KIVFile& folder,
                                     unsigned int kind)
{
    KIVFileReferenceList list;
    for (const unsigned long tag : manager.inq_tags(kind)) {
        const std::unique_ptr<KIVFile> file(manager.export_asset(kind, tag));
        list.add(KIVFileReference(folder, *file, ASSET_KIND_NAMES[kind]), static_cast<int>(tag));
    }
    return list;
}
} // namespace

gsl::owner<KIVAssetManager*> TransitionalAssets::load_asset_manager(XSheetStoreController* store)
{
    if (store->inq_part_exists(ASSET_PART))
        return load_record(*store).release();
    std::unique_ptr<KIVAssetManager> manager =
        LoadFile(*store, OLD_ASSET_PART).read<KIVAssetManager>();
    return manager ? manager.release() : new KIVAssetManager;
}

void TransitionalAssets::save_asset_manager(KIVAssetManager* manager, XSheetStoreController* store)
{
    KIVFile folder(*store->inq_root_folder());
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind) {
        const KIVFileReferenceList list = list_references(*manager, folder, kind);
        folder.set_reference_list_value(ASSET_KIND_NAMES[kind], &list);
    }
    SaveFile file(*store, ASSET_PART);
    if (file.inq_stream()) {
        folder.insert_kvd(*file.inq_stream());
        file.finish();
    }
}
