#pragma once

#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/KIVRectangle.h"

#include <memory>

class CameraWatcher;
class KIVScene;

/// The scene's camera as its cover sheet sets it: 720 world units wide, and as high as the aspect
/// ratio says. The scene owns it and makes it anew each time.
class KIVCamera : public KIVObject {
    KIV_STORED(KIVCamera, KIVObject);

public:
    explicit KIVCamera(KIVScene* scene) : scene(scene) {}
    explicit KIVCamera(KIVIStream& stream) : KIVObject(stream) {}
    ~KIVCamera() override;

    void storer(KIVOStream& stream) override { KIVObject::storer(stream); }

    /// In world units: 60 to the field, 12 fields.
    static constexpr double inq_nominal_camera_width() { return 60.0 * 12.0; }

    /// Width over height.
    double inq_aspect_ratio() const;

    /// Around the origin, in world units.
    KIVRectangle inq_camera_rect() const;

    void add_watcher(CameraWatcher* watcher);
    void remove_watcher(CameraWatcher* watcher);

    /// Tells the watchers, in the order of their addition.
    void aspect_ratio_changed() const;

private:
    KIVScene* scene = nullptr;               // not owned
    std::unique_ptr<KIVLinkedList> watchers; // null until the first; refers to them
};

/// Follows one camera from construction to destruction of either.
class CameraWatcher : public KIVObject {
public:
    explicit CameraWatcher(KIVCamera* camera);
    CameraWatcher(const CameraWatcher&) = delete;
    CameraWatcher& operator=(const CameraWatcher&) = delete;
    ~CameraWatcher() override;

    virtual void aspect_ratio_changed() = 0;

private:
    friend class KIVCamera;

    KIVCamera* camera; // not owned
};
