#pragma once

#include "kivlib/hdr/CameraType.h"
#include "kivlib/hdr/KIVLinkedList.h"

#include <memory>

class FieldChartWatcher;
class KIVScene;

/// The scene's field chart as its cover sheet sets it. The scene owns it and makes it anew each
/// time.
class KIVFieldChart : public KIVObject {
    KIV_STORED(KIVFieldChart, KIVObject);

public:
    explicit KIVFieldChart(KIVScene* scene) : scene(scene) {}
    explicit KIVFieldChart(KIVIStream& stream) : KIVObject(stream) {}
    ~KIVFieldChart() override;

    void storer(KIVOStream& stream) override { KIVObject::storer(stream); }

    FieldChartStyle inq_style() const;

    /// In fields, or in millimetres if the style is.
    int inq_size() const;

    /// Width over height.
    double inq_aspect_ratio() const;

    void add_watcher(FieldChartWatcher* watcher);
    void remove_watcher(FieldChartWatcher* watcher);

    /// Tells the watchers, in the order of their addition.
    void field_chart_changed() const;

private:
    KIVScene* scene = nullptr;               // not owned
    std::unique_ptr<KIVLinkedList> watchers; // null until the first; refers to them
};

/// Follows one field chart from construction to destruction of either.
class FieldChartWatcher : public KIVObject {
public:
    explicit FieldChartWatcher(KIVFieldChart* field_chart);
    FieldChartWatcher(const FieldChartWatcher&) = delete;
    FieldChartWatcher& operator=(const FieldChartWatcher&) = delete;
    ~FieldChartWatcher() override;

    virtual void field_chart_changed() = 0;

private:
    friend class KIVFieldChart;

    KIVFieldChart* field_chart; // not owned
};
