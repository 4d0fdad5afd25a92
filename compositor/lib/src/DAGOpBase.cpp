#include "compositor/lib/hdr/DAGOpBase.h"

#include "compositor/lib/hdr/DAGExec.h"
#include "compositor/lib/hdr/DAGExecError.h"
#include "compositor/lib/hdr/DAGOpNode.h"

namespace {
DAGOpChannel* find_channel(const DAGOpChannelSet* channels, int i)
{
    return channels ? channels->inq_channel(i) : nullptr;
}

void set_or_delete(DAGOpChannel* channel, gsl::owner<KIVObject*> value)
{
    if (channel)
        channel->set_data(value);
    else
        delete value;
}
} // namespace

bool DAGOpBase::inq_store_result() const
{
    return exec && exec->inq_store_result();
}

bool DAGOpBase::signal_exception(gsl::owner<KIVError*> error)
{
    if (exec)
        return exec->signal_and_drop(error);
    delete error;
    return true;
}

KIVObject* DAGOpBottomUp::inq_input(int i) const
{
    const DAGOpNode* node = inq_node();
    const DAGOpChannel* channel = node ? find_channel(node->inq_inputs(), i) : nullptr;
    return channel ? channel->inq_data() : nullptr;
}

void DAGOpBottomUp::set_output(int i, gsl::owner<KIVObject*> value)
{
    const DAGOpNode* node = inq_node();
    set_or_delete(node ? find_channel(node->inq_outputs(), i) : nullptr, value);
}

KIVObject* DAGOpTopDown::inq_output(int i) const
{
    const DAGOpChannel* channel = node ? find_channel(node->inq_outputs(), i) : nullptr;
    return channel ? channel->inq_data() : nullptr;
}

void DAGOpTopDown::set_input(int i, gsl::owner<KIVObject*> value)
{
    set_or_delete(node ? find_channel(node->inq_inputs(), i) : nullptr, value);
}

void DAGOpBottomUpDefault::execute()
{
    signal_exception(new DAGOpGenericError);
}
