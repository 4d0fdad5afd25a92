#pragma once

#include "scene/hdr/KIVAssetManager.h"
#include "tests/support/OldRecord.h"

inline void tell_asset(OldRecord& out, const char* class_name, int tag, unsigned int kind,
                       const char* path)
{
    out.nested(class_name, 1, [&](OldRecord& r) {
        KIVString name("shown");
        KIVString stored_path(path);
        r << static_cast<long>(tag) << kind;
        r.insert_with_class_hdr(&name);
        r.insert_with_class_hdr(&stored_path);
        if (kind == LEVEL_ASSET)
            r << 1;
    });
}

/// The old asset file with one asset of each of its kinds, tagged 2.
inline std::string tell_old_assets()
{
    OldRecord old("KIVAssetManager", 1);
    const char* const classes[] = {"RasterAsset", "LevelAsset", "SoundAsset"};
    for (unsigned int kind = 0; kind < 3; ++kind) {
        old.nested("NameKeyDictionary", 1, [&](OldRecord& r) {
            r << 1 << 2L;
            tell_asset(r, classes[kind], 2, kind, "art\\line.tif");
        });
        old << 5;
    }
    return old.finish();
}
