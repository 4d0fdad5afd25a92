#include "xsheet/column/hdr/XSheetWatcher.h"

#include "xsheet/column/hdr/XSheet.h"

XSheetWatcher::XSheetWatcher(XSheet* watched, unsigned long label)
    : ColumnWatcher(watched, label, nullptr)
{}

gsl::owner<SubColumnWatcher*> XSheetWatcher::create_new_watcher(SubColumn* watched,
                                                                unsigned long new_label,
                                                                ColumnWatcher* parent)
{
    if (!watched->is_column())
        return new SubColumnWatcher(watched, new_label, parent);
    return new ColumnWatcher(static_cast<Column*>(watched), new_label, parent);
}

void XSheetWatcher::setup_watch_columns()
{
    watch_columns = true;
    for_each_member([this](SubColumn* member) { sub_column_added(member); });
}

void XSheetWatcher::setup_watch_sub_columns()
{
    watch_columns = true;
    ColumnWatcher::setup_watch_sub_columns();
    for (SubColumnWatcher* child : sub_column_watchers.of<SubColumnWatcher>())
        if (ColumnWatcher* watcher = as_column_watcher(child))
            watcher->setup_watch_sub_columns();
}

SubColumnWatcher* XSheetWatcher::sub_column_added(SubColumn* member)
{
    if (!watch_columns)
        return nullptr;
    bool is_new = false;
    SubColumnWatcher* watcher = find_or_create_watcher(member, is_new);
    ColumnWatcher* column_watcher = as_column_watcher(watcher);
    if (is_new && watch_sub_columns && column_watcher)
        column_watcher->setup_watch_sub_columns();
    watcher->frames_all_changed();
    return watcher;
}

void XSheetWatcher::sub_column_removed(SubColumn* member)
{
    SubColumnWatcher* watcher = member->inq_watcher(inq_label());
    if (!watcher)
        return;
    ColumnWatcher* column_watcher = as_column_watcher(watcher);
    if (watch_sub_columns && column_watcher)
        column_watcher->clear_watch_sub_columns();
    frames_all_changed();
    remove_watcher_of(member, watcher);
}
