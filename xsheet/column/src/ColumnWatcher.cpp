#include "xsheet/column/hdr/ColumnWatcher.h"

#include "xsheet/column/hdr/Column.h"

ColumnWatcher::ColumnWatcher(Column* watched, unsigned long label, ColumnWatcher* parent)
    : SubColumnWatcher(watched, label, parent, Kind::COLUMN)
{}

ColumnWatcher::~ColumnWatcher()
{
    while (KIVObject* child = sub_column_watchers.remove()) {
        auto* watcher = static_cast<SubColumnWatcher*>(child);
        watcher->set_column_watcher(nullptr);
        delete watcher;
    }
}

ColumnWatcher* ColumnWatcher::as_column_watcher(SubColumnWatcher* watcher)
{
    const bool is_one = watcher && watcher->kind == Kind::COLUMN;
    return is_one ? static_cast<ColumnWatcher*>(watcher) : nullptr;
}

void ColumnWatcher::for_each_member(const std::function<void(SubColumn*)>& function) const
{
    const auto* column = static_cast<const Column*>(inq_sub_column());
    if (!column)
        return;
    for (SubColumn* member : column->inq_sub_column_list()->of<SubColumn>())
        function(member);
}

gsl::owner<SubColumnWatcher*> ColumnWatcher::create_new_watcher(SubColumn* watched,
                                                                unsigned long new_label,
                                                                ColumnWatcher* parent)
{
    return new SubColumnWatcher(watched, new_label, parent);
}

void ColumnWatcher::setup_watch_sub_columns()
{
    watch_sub_columns = true;
    for_each_member([this](SubColumn* member) { sub_column_added(member); });
}

void ColumnWatcher::clear_watch_sub_columns()
{
    watch_sub_columns = false;
    for_each_member([this](SubColumn* member) { sub_column_removed(member); });
}

SubColumnWatcher* ColumnWatcher::sub_column_added(SubColumn* member)
{
    bool is_new = false;
    return watch_sub_columns ? find_or_create_watcher(member, is_new) : nullptr;
}

SubColumnWatcher* ColumnWatcher::find_or_create_watcher(SubColumn* member, bool& is_new)
{
    SubColumnWatcher* watcher = member->inq_watcher(inq_label());
    is_new = !watcher;
    if (is_new) {
        watcher = create_new_watcher(member, inq_label(), this);
        member->add_watcher(watcher);
        add_sub_column_watcher(watcher);
    }
    return watcher;
}

void ColumnWatcher::sub_column_removed(SubColumn* member)
{
    if (SubColumnWatcher* watcher = member->inq_watcher(inq_label()))
        remove_watcher_of(member, watcher);
}

void ColumnWatcher::remove_watcher_of(SubColumn* member, gsl::owner<SubColumnWatcher*> watcher)
{
    member->remove_watcher(watcher);
    remove_sub_column_watcher(watcher);
    delete watcher;
}

void ColumnWatcher::clear_frame(int frame)
{
    for (SubColumnWatcher* watcher : sub_column_watchers.of<SubColumnWatcher>())
        watcher->clear_frame(frame);
}

void ColumnWatcher::clear_frame_range(int first, int last)
{
    for (SubColumnWatcher* watcher : sub_column_watchers.of<SubColumnWatcher>())
        watcher->clear_frame_range(first, last);
}

void ColumnWatcher::add_sub_column_watcher(gsl::owner<SubColumnWatcher*> watcher)
{
    sub_column_watchers.add(watcher);
    watcher->set_column_watcher(this);
    watcher->set_label(inq_label());
}

gsl::owner<SubColumnWatcher*> ColumnWatcher::remove_sub_column_watcher(SubColumnWatcher* watcher)
{
    sub_column_watchers.remove(watcher);
    watcher->set_column_watcher(nullptr);
    return watcher;
}
