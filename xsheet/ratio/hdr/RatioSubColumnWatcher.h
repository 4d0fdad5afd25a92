#pragma once

class RatioColumnData;
class RatioKeyCellData;

#include "xsheet/column/hdr/SubColumnWatcher.h"

/// Carries a change of the source column to a column that follows it. It belongs to its data.
class RatioSubColumnWatcher : public SubColumnWatcher {
public:
    RatioSubColumnWatcher(SubColumn* source, RatioColumnData* data);

    void range_changed_notifier(int first, int last) override;
    void scene_closing() override;

private:
    RatioColumnData* data; // not owned
};

/// The same for a single key.
class KeyCellRatioSubColumnWatcher : public SubColumnWatcher {
public:
    KeyCellRatioSubColumnWatcher(SubColumn* source, RatioKeyCellData* data);

    void range_changed_notifier(int first, int last) override;
    void scene_closing() override;

private:
    RatioKeyCellData* data; // not owned
};
