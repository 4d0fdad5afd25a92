#pragma once

#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/column/hdr/SubColumnWatcher.h"

#include <string>

/// Writes down the ranges of frames that a sub-column tells it of, and leaves it in the end.
class RecordingWatcher : public SubColumnWatcher {
public:
    explicit RecordingWatcher(SubColumn& watched)
        : SubColumnWatcher(&watched, allocate_unique_watcher_label(), nullptr)
    {
        watched.add_watcher(this);
    }

    void range_changed_notifier(int first, int last) override
    {
        const std::string range = std::to_string(first) + "-" + std::to_string(last);
        told += told.empty() ? range : " " + range;
    }
    void scene_closing() override { told += " closing"; }

    /// What it was told since the last call: "3-5 7-7".
    std::string take() { return std::exchange(told, ""); }

private:
    std::string told;
};
