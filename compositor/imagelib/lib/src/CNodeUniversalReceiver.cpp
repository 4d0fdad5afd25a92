#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"

#include "compositor/imagelib/lib/hdr/CNodeNullOp.h"
#include "compositor/imagelib/lib/src/pair_title.h"

CNodeUniversalReceiver::CNodeUniversalReceiver()
{
    init_subcolumn(new SubColumn, "");
}

int CNodeUniversalReceiver::inq_n_vis_input_channels() const
{
    const CNode* transmitter = inq_transmitter();
    const bool is_shown = inq_is_selected() || (transmitter && transmitter->inq_is_selected());
    return is_shown ? inq_n_input_channels() : 0;
}

gsl::owner<CNodeOp*> CNodeUniversalReceiver::new_nodeop(int)
{
    return new CNodeNullOp(this);
}

gsl::owner<KIVLinkedList*> CNodeUniversalReceiver::inq_descendents(bool, bool) const
{
    return new KIVLinkedList(false);
}

CNode* CNodeUniversalReceiver::inq_transmitter() const
{
    const std::unique_ptr<KIVLinkedList> sources(inq_child_nodes());
    return static_cast<CNode*>(sources->at_index(0));
}

void CNodeUniversalReceiver::update_name()
{
    const CNode* transmitter = inq_transmitter();
    if (!transmitter || !transmitter->is_kind_of("XSNode"))
        return;
    const KIVString title = title_of(static_cast<const XSNode&>(*transmitter));
    if (!title.is_null())
        set_title(*this, title);
}
