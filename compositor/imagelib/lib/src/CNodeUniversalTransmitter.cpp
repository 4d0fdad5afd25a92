#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/src/pair_title.h"

CNodeUniversalTransmitter::CNodeUniversalTransmitter()
{
    init_subcolumn(new SubColumn, "");
}

void CNodeUniversalTransmitter::input_connections_updated()
{
    update_name();
    input_connections_changed();
}

gsl::owner<CNodeOp*> CNodeUniversalTransmitter::new_nodeop(int)
{
    return new CNodeNullOp(this);
}

CNodeUniversalReceiver* CNodeUniversalTransmitter::inq_receiver() const
{
    const std::unique_ptr<KIVLinkedList> readers(inq_parent_nodes());
    for (CNode* reader : readers->of<CNode>())
        if (reader->inq_type() == CNodeUniversalReceiver::inq_type_s())
            return static_cast<CNodeUniversalReceiver*>(reader);
    return nullptr;
}

void CNodeUniversalTransmitter::update_name()
{
    KIVString title = title_of(*this);
    if (title.is_null())
        title = inq_source_node_names();
    set_title(*this, title);
    if (const CNodeUniversalReceiver* receiver = inq_receiver())
        set_title(*receiver, title);
}
