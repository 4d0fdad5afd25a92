#pragma once

#include "kivlib/hdr/KIVObject.h"

class CNodeGraph;

/// Is told of every edit of a graph, from its construction to its destruction.
class CNodeGraphWatcher : public KIVObject {
public:
    explicit CNodeGraphWatcher(CNodeGraph* graph);
    CNodeGraphWatcher(const CNodeGraphWatcher&) = delete;
    CNodeGraphWatcher& operator=(const CNodeGraphWatcher&) = delete;
    ~CNodeGraphWatcher() override;

    virtual void connections_changed(bool connected_to_root) = 0;
    virtual void number_of_nodes_changed() = 0;

private:
    friend class CNodeGraph;

    CNodeGraph* graph; // not owned; null once the graph is gone
};

/// Is told when other nodes are selected.
class CNodeGraphSelectionWatcher : public KIVObject {
public:
    virtual void selection_changed() = 0;
};
