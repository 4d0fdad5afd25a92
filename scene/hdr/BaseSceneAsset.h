#pragma once

#include "kivlib/hdr/KIVFile.h"
#include "kivlib/hdr/StoredClass.h"

#include <array>

class BaseFileFinder;

/// Kinds of asset. The numbers are stored.
enum AssetKind : unsigned int {
    RASTER_ASSET = 0,
    LEVEL_ASSET = 1,
    SOUND_ASSET = 2,
    MODEL_ASSET = 3,
    ASSET_KIND_COUNT = 4
};

/// Their lists in the record of a scene folder.
inline constexpr std::array<const char*, ASSET_KIND_COUNT> ASSET_KIND_NAMES = {"Images", "Levels",
                                                                               "Sounds", "Models"};

/// A file that a scene depends on and does not contain. Cells refer to it by kind and tag, so its
/// path can change in one place. The asset manager owns it.
class BaseSceneAsset : public KIVObject {
    KIV_STORED(BaseSceneAsset, KIVObject);

public:
    /// `tag` counts from 0 within the kind.
    BaseSceneAsset(unsigned long tag, unsigned int type, const KIVFile& file);
    explicit BaseSceneAsset(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// Looks for the file, and may let the user replace it.
    virtual bool check_for_lost_file() { return true; }

    unsigned long inq_tag() const { return tag; }
    unsigned int inq_type() const { return type; }
    const KIVString& inq_user_name() const { return user_name; }
    KIVString inq_local_path() const { return file; }
    const KIVFile& inq_kivfile() const { return file; }
    bool inq_has_changed() const { return has_changed; }
    bool inq_used_flag() const { return used_flag; }

    void set_tag(unsigned long new_tag) { tag = new_tag; }

    /// The name shown to users.
    void set_user_name(const KIVString& name);
    void set_has_changed(bool changed) { has_changed = changed; }
    void set_used_flag(bool used) { used_flag = used; }

protected:
    void set_local_path(const KIVString& path);
    void set_legacy_path(const KIVString& path);

    /// Asks the finder for the file, and follows it; without one, a missing file is told under
    /// `message`. Gives the finder's flag.
    bool look_for_file(const char* title, const char* message);

private:
    template <class Record> void record(Record& r);
    bool follow_finder(BaseFileFinder& finder, const char* title);

    unsigned long tag = 0;
    unsigned int type = 0;
    KIVFile file;
    KIVString user_name;
    bool has_changed = false;
    bool used_flag = true;
};
