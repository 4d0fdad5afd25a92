#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/StoredClass.h"

/// What a batch service has to know of a scene: its folder, the shape of its camera and its frames
/// from 1, all of them, those selected and those with keys.
class BatchSceneInfo : public KIVObject {
    KIV_STORED(BatchSceneInfo, KIVObject);

public:
    /// All three ranges are from `first` to `last`.
    BatchSceneInfo(const KIVString& scene_path, int first, int last);

    /// The path does not come along.
    explicit BatchSceneInfo(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    const KIVString& inq_scene_path() const { return scene_path; }
    double inq_camera_aspect_ratio() const { return camera_aspect_ratio; }
    void inq_frame_range(int* first, int* last) const;
    void inq_selected_range(int* first, int* last) const;
    void inq_key_range(int* first, int* last) const;

    void set_camera_aspect_ratio(double ratio) { camera_aspect_ratio = ratio; }
    void set_selected_range(int first, int last);
    void set_key_range(int first, int last);

private:
    template <class Record> void record(Record& r);

    KIVString scene_path;
    double camera_aspect_ratio = 1.68;
    int frame_first = 0;
    int frame_last = 0;
    int selected_first = 0;
    int selected_last = 0;
    int key_first = 0;
    int key_last = 0;
};
