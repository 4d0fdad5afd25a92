#include "scene/hdr/KIVAssetManager.h"

#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"
#include "scene/hdr/LevelAsset.h"
#include "scene/hdr/ModelAsset.h"
#include "scene/hdr/RasterAsset.h"
#include "scene/hdr/SoundAsset.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

KIV_STORED_CLASS(KIVAssetManager, -1);

namespace {
constexpr int IS_DIRTY = 1;
constexpr unsigned int BUCKET_COUNT = 128;
constexpr unsigned int OLD_KIND_COUNT = 3;
constexpr std::array<const char*, ASSET_KIND_COUNT> CLASS_NAMES = {
    RasterAsset::inq_class_name_s(), LevelAsset::inq_class_name_s(), SoundAsset::inq_class_name_s(),
    ModelAsset::inq_class_name_s()};
constexpr int LAST_TAG = 500'000'000; // so that the counts of all kinds add up

BaseSceneAsset* asset_of(const DictionaryIterator& pairs)
{
    return static_cast<BaseSceneAsset*>(pairs.get_assoc()->value);
}
} // namespace

KIVAssetManager::KIVAssetManager()
{
    for (auto& assets_of_kind : assets)
        assets_of_kind = std::make_unique<NameKeyDictionary>(BUCKET_COUNT);
}

KIVAssetManager::KIVAssetManager(KIVIStream& stream)
    : KIVObject(stream), needs_saving_flags(IS_DIRTY)
{
    RecordReader fields(stream);
    for (unsigned int kind = 0; kind < OLD_KIND_COUNT; ++kind) {
        fields.owned(assets[kind]);
        fields.value(next_tag[kind]);
    }
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind) {
        if (!assets[kind])
            assets[kind] = std::make_unique<NameKeyDictionary>(BUCKET_COUNT);
        refuse_strangers(stream, kind);
        const std::vector<unsigned long> tags = inq_tags(kind);
        if (!tags.empty() && tags.back() >= static_cast<unsigned long>(next_tag[kind]))
            stream.set_error_state(KIVStream::BAD_COUNT);
        if (std::ranges::adjacent_find(tags) != tags.end())
            stream.set_error_state(KIVStream::BAD_DATA);
        if (next_tag[kind] < 0 || next_tag[kind] > LAST_TAG)
            stream.set_error_state(KIVStream::BAD_COUNT);
    }
}

/// A dictionary reads objects of any class, under any key.
void KIVAssetManager::refuse_strangers(KIVIStream& stream, unsigned int kind)
{
    const char* name = CLASS_NAMES[kind];
    DictionaryIterator pairs(assets[kind].get());
    while (pairs.advance())
        if (!pairs.get_assoc()->value->is_kind_of(name)) {
            stream.set_error(KIVStream::WRONG_CLASS, KIVString("expected ") + name);
            delete pairs.remove();
        } else if (asset_of(pairs)->inq_tag() != pairs.get_assoc()->hash ||
                   asset_of(pairs)->inq_type() != kind)
            stream.set_error_state(KIVStream::BAD_DATA);
}

KIVAssetManager::~KIVAssetManager()
{
    for (auto& assets_of_kind : assets)
        assets_of_kind->delete_all();
}

void KIVAssetManager::storer(KIVOStream&)
{
    *cerrp << "KIVAssetManager is obsolete and cannot be stored.\n";
}

gsl::owner<BaseSceneAsset*> KIVAssetManager::do_create_asset(unsigned int kind, const KIVFile& file)
{
    switch (kind) {
    case RASTER_ASSET:
        return new RasterAsset(0, kind, file);
    case LEVEL_ASSET:
        return new LevelAsset(0, kind, file);
    case SOUND_ASSET:
        return new SoundAsset(0, kind, file);
    case MODEL_ASSET:
        return new ModelAsset(0, kind, file);
    default:
        return new BaseSceneAsset(0, kind, file);
    }
}

BaseSceneAsset* KIVAssetManager::create_and_add_asset(const KIVString& path, unsigned int kind)
{
    KIVFile file;
    file.set_local_path(path);
    return create_and_add(file, kind);
}

BaseSceneAsset* KIVAssetManager::create_and_add_legacy_asset(const KIVString& path,
                                                             unsigned int kind)
{
    KIVFile file;
    file.set_universal_or_legacy_path(path);
    return create_and_add(file, kind);
}

BaseSceneAsset* KIVAssetManager::create_and_add(const KIVFile& file, unsigned int kind)
{
    if (kind >= ASSET_KIND_COUNT)
        return nullptr;
    BaseSceneAsset* asset = do_create_asset(kind, file);
    add_asset(asset);
    return asset;
}

void KIVAssetManager::add_asset(gsl::owner<BaseSceneAsset*> asset)
{
    const unsigned int kind = asset->inq_type();
    if (kind >= ASSET_KIND_COUNT) {
        report_here() << "Program error.\n";
        delete asset;
        return;
    }
    asset->set_tag(static_cast<unsigned long>(next_tag[kind]++));
    enter(asset, kind);
}

bool KIVAssetManager::import_asset(const KIVFile& file, unsigned int kind, unsigned long tag)
{
    if (kind >= ASSET_KIND_COUNT || tag > static_cast<unsigned long>(LAST_TAG) ||
        lookup_asset(tag, kind))
        return false;
    BaseSceneAsset* asset = do_create_asset(kind, file);
    next_tag[kind] = std::max(next_tag[kind], static_cast<int>(tag) + 1);
    asset->set_tag(tag);
    enter(asset, kind);
    return true;
}

// A tag near the last one is damage, and would leave no tags to be given.
void KIVAssetManager::reserve_tag(unsigned int kind, unsigned long tag)
{
    constexpr unsigned long MOST = LAST_TAG / 2;
    if (kind < ASSET_KIND_COUNT && tag <= MOST)
        next_tag[kind] = std::max(next_tag[kind], static_cast<int>(tag) + 1);
}

void KIVAssetManager::enter(gsl::owner<BaseSceneAsset*> asset, unsigned int kind)
{
    assets[kind]->add(asset->inq_tag(), *asset);
    set_needs_saving();
    contents_changed = true;
}

BaseSceneAsset* KIVAssetManager::lookup_asset(unsigned long tag, unsigned int kind) const
{
    KIVObject* asset = nullptr;
    if (kind < ASSET_KIND_COUNT)
        assets[kind]->lookup_assoc(tag, &asset);
    return static_cast<BaseSceneAsset*>(asset);
}

int KIVAssetManager::inq_total_asset_count() const
{
    int count = 0;
    for (const int tags : next_tag)
        count += tags;
    return count;
}

int KIVAssetManager::inq_asset_count_for_type(unsigned int kind) const
{
    return kind < ASSET_KIND_COUNT ? next_tag[kind] : 0;
}

std::vector<unsigned long> KIVAssetManager::inq_tags(unsigned int kind) const
{
    std::vector<unsigned long> tags;
    if (kind >= ASSET_KIND_COUNT)
        return tags;
    DictionaryIterator pairs(assets[kind].get());
    while (pairs.advance())
        tags.push_back(pairs.get_assoc()->hash);
    std::ranges::sort(tags);
    return tags;
}

gsl::owner<KIVFile*> KIVAssetManager::export_asset(unsigned int kind, unsigned long tag) const
{
    const BaseSceneAsset* asset = lookup_asset(tag, kind);
    return asset ? new KIVFile(asset->inq_kivfile()) : nullptr;
}

void KIVAssetManager::mark_all_unused()
{
    for (const auto& assets_of_kind : assets) {
        DictionaryIterator pairs(assets_of_kind.get());
        while (pairs.advance())
            asset_of(pairs)->set_used_flag(false);
    }
}

int KIVAssetManager::remove_unused_assets()
{
    int removed = 0;
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind) {
        if (kind == SOUND_ASSET)
            continue;
        DictionaryIterator pairs(assets[kind].get());
        while (pairs.advance())
            if (!asset_of(pairs)->inq_used_flag()) {
                delete pairs.remove();
                ++removed;
            }
    }
    return removed;
}

void KIVAssetManager::set_needs_saving()
{
    if (inq_xs_store_control()->update_dirty_flags())
        needs_saving_flags |= IS_DIRTY;
}

void KIVAssetManager::set_just_saved()
{
    needs_saving_flags = inq_xs_store_control()->clear_flags_after_save(needs_saving_flags);
}

bool KIVAssetManager::inq_needs_saving() const
{
    return inq_xs_store_control()->check_needs_saving_flags(needs_saving_flags);
}
