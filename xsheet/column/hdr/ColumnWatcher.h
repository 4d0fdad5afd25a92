#pragma once

class Column;

#include "kivlib/hdr/KIVLinkedList.h"
#include "xsheet/column/hdr/SubColumnWatcher.h"

#include <functional>

/// Watches a column and, if asked to, each sub-column in it through a watcher of its own, which it
/// deletes. What changes in a member has changed in the column.
class ColumnWatcher : public SubColumnWatcher {
public:
    ColumnWatcher(Column* watched, unsigned long label, ColumnWatcher* parent);
    ~ColumnWatcher() override;

protected:
    virtual gsl::owner<SubColumnWatcher*>
    create_new_watcher(SubColumn* watched, unsigned long new_label, ColumnWatcher* parent);

public:
    virtual void setup_watch_sub_columns();
    virtual void clear_watch_sub_columns();

    /// The member's watcher, which may be made now; null if the members are not watched.
    virtual SubColumnWatcher* sub_column_added(SubColumn* member);
    virtual void sub_column_removed(SubColumn* member);

    bool inq_watch_sub_columns() const { return watch_sub_columns; }

    /// Forgets frames in the watchers of the members, and keeps them here.
    void clear_frame(int frame);
    void clear_frame_range(int first, int last);

    /// The watcher takes the label of this. It is deleted with this.
    void add_sub_column_watcher(gsl::owner<SubColumnWatcher*> watcher);
    gsl::owner<SubColumnWatcher*> remove_sub_column_watcher(SubColumnWatcher* watcher);

    /// The watcher as one of a column; null if it is none or null.
    static ColumnWatcher* as_column_watcher(SubColumnWatcher* watcher);

protected:
    void for_each_member(const std::function<void(SubColumn*)>& function) const;

    /// The member's watcher with the label of this. A new one is `is_new`.
    SubColumnWatcher* find_or_create_watcher(SubColumn* member, bool& is_new);
    void remove_watcher_of(SubColumn* member, gsl::owner<SubColumnWatcher*> watcher);

    KIVLinkedList sub_column_watchers{false}; // owned, and deleted by the destructor
    bool watch_sub_columns = false;
};
