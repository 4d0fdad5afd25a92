#include "compositor/lib/hdr/CNodeGraph.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/node/hdr/XSNode.h"

gsl::owner<KIVLinkedList*> make_column_ordered_list(CNodeGraph* graph)
{
    auto* columns = new KIVLinkedList;
    const std::unique_ptr<KIVLinkedList> nodes(graph->make_ordered_nodes_list());
    for (CNode* node : nodes->of<CNode>()) {
        Column* column =
            node->is_kind_of("XSNode") ? static_cast<XSNode*>(node)->inq_column() : nullptr;
        if (column)
            columns->add(column);
    }
    return columns;
}
