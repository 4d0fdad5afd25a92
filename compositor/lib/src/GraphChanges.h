#pragma once

/// How often something has changed, in any graph of the process, that a graph keeps results of:
/// lists of nodes, channels and connections, and what the classes of nodes and data say. A result
/// holds while the count stands still.
class GraphChanges {
public:
    inline static unsigned long our_count = 0;

    /// The lists of types on nodes have a count of their own: a check itself changes them.
    inline static unsigned long our_type_lists = 0;
};
