#include "compositor/lib/hdr/CNodeGraph.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/node/hdr/XSNode.h"

gsl::owner<KIVLinkedList*> make_column_ordered_list(CNodeGraph* graph)
{
    auto* columns = new KIVLinkedList;
    const std::unique_ptr<KIVLinkedList> nodes(graph->make_ordered_nodes_list());
    for (CNode* node : nodes->of<CNode>()) {
        const auto* bearer = dynamic_cast<XSNode*>(node); // a stand-in only says that it is one
        if (bearer && bearer->inq_column())
            columns->add(bearer->inq_column());
    }
    return columns;
}
