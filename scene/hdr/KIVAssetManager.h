#pragma once

#include "kivlib/hdr/NameKeyDictionary.h"
#include "scene/hdr/BaseSceneAsset.h"

#include <array>
#include <memory>
#include <vector>

/// Owns the assets of a scene and numbers them within each kind, from 0. A tag is given once: what
/// was removed leaves a hole.
class KIVAssetManager : public KIVObject {
    KIV_STORED(KIVAssetManager, KIVObject);

public:
    KIVAssetManager();

    /// From the old form, which has no models. Such a scene needs saving.
    explicit KIVAssetManager(KIVIStream& stream);
    KIVAssetManager(const KIVAssetManager&) = delete;
    KIVAssetManager& operator=(const KIVAssetManager&) = delete;
    ~KIVAssetManager() override;

    /// Complains and writes nothing: `TransitionalAssets` saves the list.
    void storer(KIVOStream& stream) override;

    virtual void set_needs_saving();
    virtual void set_just_saved();

    /// The manager keeps the asset. Null for a kind that does not exist.
    BaseSceneAsset* create_and_add_asset(const KIVString& path, unsigned int kind);
    BaseSceneAsset* create_and_add_legacy_asset(const KIVString& path, unsigned int kind);

    /// Takes the asset over and gives it the next tag of its kind.
    void add_asset(gsl::owner<BaseSceneAsset*> asset);

    /// Null if there is none.
    BaseSceneAsset* lookup_asset(unsigned long tag, unsigned int kind) const;

    /// Tags given out so far, removed assets among them.
    int inq_total_asset_count() const;
    int inq_asset_count_for_type(unsigned int kind) const;

    /// The tags of the assets that are there, ascending.
    std::vector<unsigned long> inq_tags(unsigned int kind) const;

    /// The asset's file for the caller to delete, or null.
    gsl::owner<KIVFile*> export_asset(unsigned int kind, unsigned long tag) const;

    /// Somebody knows an asset by this tag, so no new one gets it.
    void reserve_tag(unsigned int kind, unsigned long tag);

    /// An asset that keeps the tag it had. False for one that another has, or none can have.
    bool import_asset(const KIVFile& file, unsigned int kind, unsigned long tag);

    /// The sweep: all are unused, those in use get their flag back, the others go. Sounds stay.
    void mark_all_unused();
    int remove_unused_assets();

    /// For whoever shows the list.
    void notify_contents_changed() { contents_changed = true; }
    void clear_contents_changed() { contents_changed = false; }
    bool inq_contents_changed() const { return contents_changed; }

    bool inq_needs_saving() const;

private:
    static gsl::owner<BaseSceneAsset*> do_create_asset(unsigned int kind, const KIVFile& file);
    BaseSceneAsset* create_and_add(const KIVFile& file, unsigned int kind);
    void enter(gsl::owner<BaseSceneAsset*> asset, unsigned int kind);
    void refuse_strangers(KIVIStream& stream, unsigned int kind);

    std::array<std::unique_ptr<NameKeyDictionary>, ASSET_KIND_COUNT> assets; // own their values
    std::array<int, ASSET_KIND_COUNT> next_tag{};
    int needs_saving_flags = 0;
    bool contents_changed = true;
};
