#include "batch/hdr/BatchSceneInfo.h"

#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(BatchSceneInfo, -1);

BatchSceneInfo::BatchSceneInfo(const KIVString& scene_path, int first, int last)
    : scene_path(scene_path), frame_first(first), frame_last(last), selected_first(first),
      selected_last(last), key_first(first), key_last(last)
{}

template <class Record> void BatchSceneInfo::record(Record& r)
{
    r.value(camera_aspect_ratio);
    r.value(frame_first);
    r.value(frame_last);
    r.value(selected_first);
    r.value(selected_last);
    r.value(key_first);
    r.value(key_last);
}

KIV_STORED_RECORD(BatchSceneInfo);

void BatchSceneInfo::inq_frame_range(int* first, int* last) const
{
    *first = frame_first;
    *last = frame_last;
}

void BatchSceneInfo::inq_selected_range(int* first, int* last) const
{
    *first = selected_first;
    *last = selected_last;
}

void BatchSceneInfo::inq_key_range(int* first, int* last) const
{
    *first = key_first;
    *last = key_last;
}

void BatchSceneInfo::set_selected_range(int first, int last)
{
    selected_first = first;
    selected_last = last;
}

void BatchSceneInfo::set_key_range(int first, int last)
{
    key_first = first;
    key_last = last;
}
