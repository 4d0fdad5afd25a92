#pragma once

#include "kivlib/hdr/KIVObject.h"

class KIVScene;
class XSheetStoreController;

/// Follows the life of every scene of the process, once it is given to `KIVScene::add_watcher`.
class KIVSceneWatcher : public KIVObject {
public:
    virtual void scene_will_create(KIVScene*) {}
    virtual void scene_was_created(KIVScene*) {}
    virtual void scene_will_delete(KIVScene*) {}
    virtual void scene_was_deleted(KIVScene*) {}
    virtual void scene_will_load(KIVScene*, XSheetStoreController*) {}
    virtual void scene_was_loaded(KIVScene*, XSheetStoreController*) {}

    /// After the parts of the scene have found one another.
    virtual void scene_fully_loaded(KIVScene*, XSheetStoreController*) {}
    virtual void scene_will_save(KIVScene*, XSheetStoreController*) {}
    virtual void scene_was_saved(KIVScene*, XSheetStoreController*) {}

    /// Whether the watcher holds changes that a save of the scene would write.
    virtual bool inq_scene_needs_saved(KIVScene*) { return false; }
};
