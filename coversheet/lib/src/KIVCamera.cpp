#include "coversheet/lib/hdr/KIVCamera.h"

#include "coversheet/lib/hdr/CoverSheet.h"
#include "scene/hdr/KIVScene.h"

KIV_STORED_CLASS(KIVCamera, -1);

KIVCamera::~KIVCamera()
{
    if (!watchers)
        return;
    for (CameraWatcher* watcher : watchers->of<CameraWatcher>())
        if (watcher->camera == this)
            watcher->camera = nullptr;
}

double KIVCamera::inq_aspect_ratio() const
{
    return scene->inq_cover_sheet()->inq_aspect_ratio();
}

KIVRectangle KIVCamera::inq_camera_rect() const
{
    constexpr double WIDTH = inq_nominal_camera_width();
    return {Vector2(), WIDTH, WIDTH / inq_aspect_ratio()};
}

void KIVCamera::add_watcher(CameraWatcher* watcher)
{
    if (!watchers)
        watchers = std::make_unique<KIVLinkedList>();
    watchers->add(watcher);
}

void KIVCamera::remove_watcher(CameraWatcher* watcher)
{
    if (!watchers || !watchers->remove(watcher) || watchers->find(watcher))
        return;
    if (watcher->camera == this)
        watcher->camera = nullptr;
}

void KIVCamera::aspect_ratio_changed() const
{
    if (!watchers)
        return;
    for (CameraWatcher* watcher : watchers->of<CameraWatcher>())
        watcher->aspect_ratio_changed();
}

CameraWatcher::CameraWatcher(KIVCamera* camera) : camera(camera)
{
    if (camera)
        camera->add_watcher(this);
}

CameraWatcher::~CameraWatcher()
{
    if (camera)
        camera->remove_watcher(this);
}
