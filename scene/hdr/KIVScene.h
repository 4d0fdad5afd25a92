#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/StoredClass.h"
#include "xsheet/store_control/hdr/FolderFacts.h"

#include <memory>

class BaseFileFinder;
class CNodeGraph;
class CoverSheet;
class KIVAssetManager;
class KIVCamera;
class KIVDLLUsageList;
class KIVFieldChart;
class KIVLinkedList;
class KIVSceneWatcher;
class KIVStringList;
class UIKIVScene;
class XSheet;
class XSheetStoreController;

/// The root of a scene, which owns all its parts. On disc it is a folder with a file for each
/// part; `Scene.contents` marks the folder. One scene at a time can be loaded or saved, since that
/// goes through the working directory of the process.
class KIVScene : public KIVObject {
    KIV_STORED(KIVScene, KIVObject);

public:
    /// Reads the parts from the open folder. On failure the store controller's flag is up and the
    /// scene is half built: delete it.
    explicit KIVScene(KIVIStream& stream);
    ~KIVScene() override;

    void storer(KIVOStream& stream) override;

    /// A new empty scene; the caller deletes it.
    static gsl::owner<KIVScene*> inq_unsetup_scene();

    /// The scene in `folder`, for the caller to delete, or null; the user has been told why.
    /// `finder`, which may be null, looks for lost files and is taken over. `flag` reaches the
    /// graph's load_finished_with_abort.
    static gsl::owner<KIVScene*> load_from_file(const KIVString& folder,
                                                gsl::owner<BaseFileFinder*> finder, bool flag);

    /// Writes the parts that need it, or all. On failure (false) the scene on disc is as it was.
    /// A copy leaves the scene itself unsaved and under its old path.
    bool save_to_file(const KIVString& folder, bool save_all, bool update_flags, bool save_as_copy);

    /// Folders are not locked: true.
    static bool lock_file(const KIVString& folder);
    static bool unlock_file(const KIVString& folder);

    virtual void set_needs_saving();
    virtual void set_just_saved();

    /// Joins the parts of a scene that was read. True if it can't be used: delete it.
    virtual bool load_finished_with_abort(bool flag);

    bool inq_needs_saving();

    /// The parts, which the scene keeps. Null only in a scene whose loading failed.
    XSheet* inq_xsheet() const { return xsheet.get(); }
    CNodeGraph* inq_graph() const { return graph.get(); }
    CoverSheet* inq_cover_sheet() const { return cover_sheet.get(); }
    KIVAssetManager* inq_asset_manager() const { return asset_manager.get(); }
    KIVCamera* inq_camera() const { return camera.get(); }
    KIVFieldChart* inq_field_chart() const { return field_chart.get(); }

    /// In frames.
    int inq_scene_length() const;

    /// Marks the assets that the sheet and the graph use.
    void mark_used_assets();

    /// Adds the paths of all files that the sheet refers to. `flag` makes no difference.
    void get_dependencies(KIVStringList& list, bool flag);

    /// The user interface's view of the scene, which keeps it; null without one.
    UIKIVScene* inq_ui_scene() const { return ui_scene; }
    void set_ui_scene(UIKIVScene* scene) { ui_scene = scene; }

    /// The scene folder; empty for a scene that was never saved or loaded.
    const KIVString& inq_current_file() const { return current_file; }

    /// A path for a file that nobody keeps, named after the scene and the moment. The next call
    /// overwrites it.
    const KIVString& inq_scratch_file() const;

    /// The watcher must outlive all scenes.
    static void add_watcher(KIVSceneWatcher* watcher);

private:
    KIVScene();

    void read_parts(XSheetStoreController& store);
    void save_assets(XSheetStoreController& store);
    static gsl::owner<KIVScene*> load(const KIVString& folder, bool flag);
    static std::unique_ptr<KIVScene> read_undisturbed();
    void remember_parts();
    bool save(const KIVString& folder, bool save_as_copy);
    bool write_files(const KIVString& folder);
    gsl::owner<KIVDLLUsageList*> make_dll_usage_list() const;

    void tw_scene_will_create();
    void tw_scene_was_created();
    void tw_scene_will_delete();
    void tw_scene_was_deleted();
    void tw_scene_will_load(XSheetStoreController* store);
    void tw_scene_was_loaded(XSheetStoreController* store);
    void tw_scene_fully_loaded(XSheetStoreController* store);
    void tw_scene_will_save(XSheetStoreController* store);
    void tw_scene_was_saved(XSheetStoreController* store);
    bool inq_tw_scene_needs_saved();

    static KIVLinkedList* m_watcher_list; // null until the first; refers to its watchers

    std::unique_ptr<XSheet> xsheet;
    std::unique_ptr<CNodeGraph> graph;
    UIKIVScene* ui_scene = nullptr; // not owned
    std::unique_ptr<CoverSheet> cover_sheet;
    KIVString current_file;
    std::unique_ptr<KIVAssetManager> asset_manager;
    std::unique_ptr<KIVCamera> camera;
    std::unique_ptr<KIVFieldChart> field_chart;
    int scene_flags = 0;

    /// The files that hold what the flags of the two parts speak of; none if nothing does.
    struct {
        FileFacts xsheet;
        FileFacts cover_sheet;
    } stored_parts;
};
