#include "compositor/lib/hdr/CNodeGraphWatcher.h"

#include "compositor/lib/hdr/CNodeGraph.h"

CNodeGraphWatcher::CNodeGraphWatcher(CNodeGraph* graph) : graph(graph)
{
    if (graph)
        graph->attach_watcher(this);
}

CNodeGraphWatcher::~CNodeGraphWatcher()
{
    if (graph)
        graph->unattach_watcher(this);
}
