#include "xsheet/column/hdr/SubColumnWatcher.h"

#include "xsheet/column/hdr/Column.h"
#include "xsheet/column/hdr/ColumnWatcher.h"

unsigned long allocate_unique_watcher_label()
{
    static unsigned long labels = 0;
    return ++labels;
}

SubColumnWatcher::SubColumnWatcher(SubColumn* watched, unsigned long label, ColumnWatcher* parent)
    : SubColumnWatcher(watched, label, parent, Kind::SUB_COLUMN)
{}

SubColumnWatcher::SubColumnWatcher(SubColumn* watched, unsigned long given_label,
                                   ColumnWatcher* parent, Kind kind)
    : label(given_label), sub_column(watched), column_watcher(parent), kind(kind)
{
    if (label == 0 && parent)
        label = parent->inq_label();
    const Column* column = watched ? watched->inq_column() : nullptr;
    if (label != 0 && !parent && column)
        column_watcher = ColumnWatcher::as_column_watcher(column->inq_watcher(label));
}

SubColumnWatcher::~SubColumnWatcher()
{
    if (column_watcher)
        column_watcher->remove_sub_column_watcher(this);
    if (listed_in)
        listed_in->remove_watcher(this);
}

void SubColumnWatcher::frame_changed(int frame)
{
    changed_frames.add_slot(frame);
    if (column_watcher)
        column_watcher->frame_changed(frame);
    if (inq_tell_notifier())
        range_changed_notifier(frame, frame);
}

void SubColumnWatcher::range_changed_notifier(int, int) {}

bool SubColumnWatcher::inq_tell_notifier()
{
    return true;
}

void SubColumnWatcher::scene_closing() {}

void SubColumnWatcher::subcolumn_being_removed() {}

void SubColumnWatcher::frame_range_changed(int first, int last)
{
    changed_frames.add_range(first, last);
    if (column_watcher)
        column_watcher->frame_range_changed(first, last);
    if (inq_tell_notifier())
        range_changed_notifier(first, last);
}

void SubColumnWatcher::frames_changed(const SlotList& frames)
{
    changed_frames.merge(frames);
    if (column_watcher)
        column_watcher->frames_changed(frames);
    if (!inq_tell_notifier())
        return;
    const std::vector<SlotList::Range> ranges = changed_frames.inq_ranges(); // may be cleared
    for (const SlotList::Range& range : ranges)
        range_changed_notifier(range.first, range.last);
}

int SubColumnWatcher::inq_last_frame() const
{
    const SubColumn* watched = sub_column;
    if (!watched && column_watcher)
        watched = column_watcher->inq_sub_column();
    return watched ? watched->inq_scene_length() : 1;
}

void SubColumnWatcher::frames_all_changed()
{
    frame_range_changed(1, inq_last_frame());
}

void SubColumnWatcher::clear_all_frames()
{
    clear_frame_range(1, inq_last_frame());
}

void SubColumnWatcher::clear_frames(const SlotList& frames)
{
    const std::vector<SlotList::Range> ranges = frames.inq_ranges(); // of this list, perhaps
    for (const SlotList::Range& range : ranges)
        changed_frames.remove_range(range.first, range.last);
}
