#pragma once

class XSheet;

#include "xsheet/column/hdr/ColumnWatcher.h"

/// Watches a whole sheet: its columns if asked to, and then the sub-columns in them as well.
class XSheetWatcher : public ColumnWatcher {
public:
    XSheetWatcher(XSheet* watched, unsigned long label);

    void setup_watch_sub_columns() override;
    SubColumnWatcher* sub_column_added(SubColumn* member) override;
    void sub_column_removed(SubColumn* member) override;

    virtual void setup_watch_columns();

    bool inq_watch_columns() const { return watch_columns; }

protected:
    gsl::owner<SubColumnWatcher*> create_new_watcher(SubColumn* watched, unsigned long new_label,
                                                     ColumnWatcher* parent) override;

private:
    bool watch_columns = false;
};
