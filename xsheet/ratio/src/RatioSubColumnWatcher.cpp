#include "xsheet/ratio/hdr/RatioSubColumnWatcher.h"

#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/ratio/hdr/RatioColumnData.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"

RatioSubColumnWatcher::RatioSubColumnWatcher(SubColumn* source, RatioColumnData* data)
    : SubColumnWatcher(source, allocate_unique_watcher_label(), nullptr), data(data)
{}

void RatioSubColumnWatcher::range_changed_notifier(int first, int last)
{
    data->column_values_changed_in_range(first, last);
}

void RatioSubColumnWatcher::scene_closing()
{
    data->source_closing();
}

KeyCellRatioSubColumnWatcher::KeyCellRatioSubColumnWatcher(SubColumn* source,
                                                           RatioKeyCellData* data)
    : SubColumnWatcher(source, allocate_unique_watcher_label(), nullptr), data(data)
{}

void KeyCellRatioSubColumnWatcher::range_changed_notifier(int first, int last)
{
    data->column_values_changed_in_range(first, last);
}

void KeyCellRatioSubColumnWatcher::scene_closing()
{
    data->source_closing();
}
