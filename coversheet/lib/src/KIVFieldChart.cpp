#include "coversheet/lib/hdr/KIVFieldChart.h"

#include "coversheet/lib/hdr/CoverSheet.h"
#include "scene/hdr/KIVScene.h"

KIV_STORED_CLASS(KIVFieldChart, -1);

KIVFieldChart::~KIVFieldChart()
{
    if (!watchers)
        return;
    for (FieldChartWatcher* watcher : watchers->of<FieldChartWatcher>())
        if (watcher->field_chart == this)
            watcher->field_chart = nullptr;
}

FieldChartStyle KIVFieldChart::inq_style() const
{
    return scene->inq_cover_sheet()->inq_field_chart_style();
}

int KIVFieldChart::inq_size() const
{
    return scene->inq_cover_sheet()->inq_field_size();
}

double KIVFieldChart::inq_aspect_ratio() const
{
    return scene->inq_cover_sheet()->inq_field_chart_ratio();
}

void KIVFieldChart::add_watcher(FieldChartWatcher* watcher)
{
    if (!watchers)
        watchers = std::make_unique<KIVLinkedList>();
    watchers->add(watcher);
}

void KIVFieldChart::remove_watcher(FieldChartWatcher* watcher)
{
    if (!watchers || !watchers->remove(watcher) || watchers->find(watcher))
        return;
    if (watcher->field_chart == this)
        watcher->field_chart = nullptr;
}

void KIVFieldChart::field_chart_changed() const
{
    if (!watchers)
        return;
    for (FieldChartWatcher* watcher : watchers->of<FieldChartWatcher>())
        watcher->field_chart_changed();
}

FieldChartWatcher::FieldChartWatcher(KIVFieldChart* field_chart) : field_chart(field_chart)
{
    if (field_chart)
        field_chart->add_watcher(this);
}

FieldChartWatcher::~FieldChartWatcher()
{
    if (field_chart)
        field_chart->remove_watcher(this);
}
