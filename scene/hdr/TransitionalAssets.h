#pragma once

#include "kivlib/hdr/Owned.h"

class KIVAssetManager;
class XSheetStoreController;

/// The asset list in the open scene folder: today the folder's record of references, in old scenes
/// a file of its own, which is only read.
class TransitionalAssets {
public:
    /// Never null, for the caller to delete. With neither form there, the controller has failed.
    static gsl::owner<KIVAssetManager*> load_asset_manager(XSheetStoreController* store);

    static void save_asset_manager(KIVAssetManager* manager, XSheetStoreController* store);
};
