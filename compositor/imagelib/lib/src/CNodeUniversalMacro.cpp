#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "kivlib/hdr/Record.h"

void CNodeUniversalMacro::Constituents::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << count();
    for (const CNode* node : of<CNode>())
        stream.insert_link(node);
}

CNodeUniversalMacro::CNodeUniversalMacro()
{
    CNode::set_is_hidden(true);
}

template <class Record> void CNodeUniversalMacro::record(Record& r)
{
    KIVLinkedList& list = constituent_nodes;
    r.headed(list);
}

CNodeUniversalMacro::CNodeUniversalMacro(KIVIStream& stream) : DWNode(stream)
{
    RecordReader r(stream);
    record(r);
    set_named_nodes(&constituent_nodes);
}

void CNodeUniversalMacro::storer(KIVOStream& stream)
{
    DWNode::storer(stream);
    const KIVLinkedList all(constituent_nodes);
    for (const CNode* node : all.of<CNode>())
        if (!is_stored_with(node))
            constituent_nodes.remove(node);
    RecordWriter r(stream);
    record(r);
    static_cast<KIVLinkedList&>(constituent_nodes) = all;
}

gsl::owner<CNodeOp*> CNodeUniversalMacro::new_nodeop(int)
{
    return new CNodeNullOp(this);
}

void CNodeUniversalMacro::add_node(CNode* node)
{
    if (!constituent_nodes.find(node))
        constituent_nodes.add(node);
}

void CNodeUniversalMacro::remove_node(const CNode* node)
{
    constituent_nodes.remove(node);
}
