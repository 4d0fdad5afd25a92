#include "kivlib/hdr/KIVLinkedList.h"
#include "scene/hdr/KIVScene.h"
#include "scene/hdr/KIVSceneWatcher.h"

KIVLinkedList* KIVScene::m_watcher_list = nullptr;

namespace {
template <class... Parameters, class... Arguments>
void tell(KIVLinkedList* watchers, void (KIVSceneWatcher::*event)(Parameters...),
          Arguments... arguments)
{
    if (!watchers)
        return;
    for (KIVSceneWatcher* watcher : watchers->of<KIVSceneWatcher>())
        (watcher->*event)(arguments...);
}
} // namespace

void KIVScene::add_watcher(KIVSceneWatcher* watcher)
{
    if (!m_watcher_list)
        m_watcher_list = new KIVLinkedList;
    m_watcher_list->add(watcher);
}

void KIVScene::tw_scene_will_create()
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_will_create, this);
}

void KIVScene::tw_scene_was_created()
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_was_created, this);
}

void KIVScene::tw_scene_will_delete()
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_will_delete, this);
}

void KIVScene::tw_scene_was_deleted()
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_was_deleted, this);
}

void KIVScene::tw_scene_will_load(XSheetStoreController* store)
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_will_load, this, store);
}

void KIVScene::tw_scene_was_loaded(XSheetStoreController* store)
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_was_loaded, this, store);
}

void KIVScene::tw_scene_fully_loaded(XSheetStoreController* store)
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_fully_loaded, this, store);
}

void KIVScene::tw_scene_will_save(XSheetStoreController* store)
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_will_save, this, store);
}

void KIVScene::tw_scene_was_saved(XSheetStoreController* store)
{
    tell(m_watcher_list, &KIVSceneWatcher::scene_was_saved, this, store);
}

bool KIVScene::inq_tw_scene_needs_saved()
{
    if (!m_watcher_list)
        return false;
    for (KIVSceneWatcher* watcher : m_watcher_list->of<KIVSceneWatcher>())
        if (watcher->inq_scene_needs_saved(this))
            return true;
    return false;
}
