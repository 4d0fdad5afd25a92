#pragma once

class ColumnWatcher;
class SubColumn;

#include "kivlib/hdr/SlotList.h"

/// One who is told which frames of a sub-column change. It gathers them until they are cleared,
/// and passes them on to the watcher of the column around it, if there is one.
class SubColumnWatcher : public KIVObject {
public:
    /// `watched` and `parent` may be null. A label of 0 means the parent's; without a parent one
    /// is looked for, by the label, among the watchers of the column around. The sub-column is not
    /// told yet: see SubColumn::add_watcher. The parent has to outlive this.
    SubColumnWatcher(SubColumn* watched, unsigned long label, ColumnWatcher* parent);
    SubColumnWatcher(const SubColumnWatcher&) = delete;
    SubColumnWatcher& operator=(const SubColumnWatcher&) = delete;

    /// Leaves the parent and the sub-column that knows it.
    ~SubColumnWatcher() override;

    virtual void frame_changed(int frame);

    /// For heirs: the frames from `first` to `last` have changed.
    virtual void range_changed_notifier(int first, int last);
    virtual bool inq_tell_notifier();

    /// The sub-column is being deleted.
    virtual void scene_closing();
    virtual void subcolumn_being_removed();

    unsigned long inq_label() const { return label; }
    void set_label(unsigned long l) { label = l; }
    SubColumn* inq_sub_column() const { return sub_column; }
    ColumnWatcher* inq_column_watcher() const { return column_watcher; }
    void set_column_watcher(ColumnWatcher* parent) { column_watcher = parent; }
    const SlotList& inq_changed_frames() const { return changed_frames; }
    bool inq_frame_changed(int frame) const { return changed_frames.contains_slot(frame); }

    void frames_all_changed();
    void frames_changed(const SlotList& frames);
    void frame_range_changed(int first, int last);

    /// These forget frames here alone.
    void clear_all_frames();
    void clear_frames(const SlotList& frames);
    void clear_frame(int frame) { changed_frames.remove_slot(frame); }
    void clear_frame_range(int first, int last) { changed_frames.remove_range(first, last); }

protected:
    enum class Kind { SUB_COLUMN, COLUMN };
    SubColumnWatcher(SubColumn* watched, unsigned long label, ColumnWatcher* parent, Kind kind);

private:
    friend class ColumnWatcher;
    friend class SubColumn;

    int inq_last_frame() const;

    SlotList changed_frames;
    unsigned long label;
    SubColumn* sub_column;          // not owned
    ColumnWatcher* column_watcher;  // not owned
    SubColumn* listed_in = nullptr; // the sub-column that has this on its list; not owned
    Kind kind;
};

/// A label that no watcher bears yet; the first is 1.
unsigned long allocate_unique_watcher_label();
