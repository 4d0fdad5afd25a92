#include "compositor/lib/hdr/DAGOpChannel.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/DAGExec.h"
#include "kivlib/hdr/KIVError.h"

KIVObject* DAGOpChannelIn::inq_input(int i) const
{
    const DAGOpConnection* connection = channel->find_connection_at(i);
    return connection ? connection->inq_output_channel()->inq_data() : nullptr;
}

void DAGOpChannelIn::set_output(int i, KIVObject* value)
{
    if (const DAGOpConnection* connection = channel->find_connection_at(i))
        connection->inq_input_channel()->set_data(value);
}

bool DAGOpChannelIn::signal_exception(gsl::owner<KIVError*> error)
{
    if (exec)
        return exec->signal_and_drop(error);
    delete error;
    return true;
}

KIVObject* DAGOpChannelOut::inq_output(int i) const
{
    const DAGOpConnection* connection = channel->find_connection_at(i);
    return connection ? connection->inq_input_channel()->inq_data() : nullptr;
}

void DAGOpChannelOut::set_input(int i, KIVObject* value)
{
    if (const DAGOpConnection* connection = channel->find_connection_at(i))
        connection->inq_output_channel()->set_data(value);
}

DAGOpChannel::DAGOpChannel(DAGOpChannelSet* channel_set, int index)
    : index(index), channel_set(channel_set)
{}

DAGOpChannel::~DAGOpChannel() = default;

DAGOpNode* DAGOpChannel::inq_node() const
{
    return channel_set->inq_node();
}

DAGOpConnection* DAGOpChannel::find_connection_at(int i) const
{
    return static_cast<DAGOpConnection*>(connections.at_index(i));
}

void DAGOpChannel::add_connection(DAGOpConnection* connection)
{
    connections.add(connection);
}

void DAGOpChannel::remove_connection(DAGOpConnection* connection)
{
    connections.remove(connection);
}

void DAGOpChannel::drop_ops()
{
    out_op.set_own(nullptr);
    in_op.set_own(nullptr);
}

void DAGOpChannel::set_op(const KIVString& name, DAGOpChannelIn* otherwise)
{
    drop_ops();
    in_op.set(CDataDescriptor::inq_bu_dag_op(name, this), otherwise);
}

void DAGOpChannel::set_op(const KIVString& name, DAGOpChannelOut* otherwise)
{
    drop_ops();
    out_op.set(CDataDescriptor::inq_td_dag_op(name, this), otherwise);
}

void DAGOpChannel::set_exec(DAGExec* exec)
{
    if (DAGOpChannelIn* op = in_op.get())
        op->set_exec(exec);
}

void DAGOpChannel::execute()
{
    out_op.execute();
    in_op.execute();
}

DAGOpChannelSet::DAGOpChannelSet(DAGOpNode* node, int n_channels)
    : node(node), n_channels(std::max(n_channels, 0))
{
    for (int i = 0; i < n_channels; ++i)
        channels.push_back(std::make_unique<DAGOpChannel>(this, i));
}

DAGOpChannel* DAGOpChannelSet::inq_channel(int i) const
{
    return 0 <= i && i < n_channels ? channels[static_cast<std::size_t>(i)].get() : nullptr;
}
