#pragma once

#include "compositor/lib/hdr/DAGOpSlot.h"
#include "kivlib/hdr/KIVLinkedList.h"

#include <memory>
#include <vector>

class CNodeChannel;
class DAGExec;
class DAGOpChannel;
class DAGOpChannelSet;
class DAGOpConnection;
class DAGOpNode;
class KIVError;
class KIVString;

/// What a pass from the leaves to the root does at one input channel, before its node's turn.
class DAGOpChannelIn : public KIVObject {
public:
    explicit DAGOpChannelIn(DAGOpChannel* channel) : channel(channel) {}

    virtual void execute() = 0;

    DAGOpChannel* inq_channel() const { return channel; }
    DAGExec* inq_exec() const { return exec; }
    void set_exec(DAGExec* of_pass) { exec = of_pass; }

    /// What stands at the far end of connection `i`; null if nothing does.
    KIVObject* inq_input(int i) const;

    /// Sets the input channel of connection `i`. Without that connection nothing happens, and
    /// `value` stays the caller's.
    void set_output(int i, KIVObject* value);

    /// True if the pass is to stop.
    bool signal_exception(gsl::owner<KIVError*> error);

private:
    DAGOpChannel* channel;   // not owned
    DAGExec* exec = nullptr; // not owned
};

/// What a pass from the root to the leaves does at one output channel, after its node's turn.
class DAGOpChannelOut : public KIVObject {
public:
    explicit DAGOpChannelOut(DAGOpChannel* channel) : channel(channel) {}

    virtual void execute() = 0;

    DAGOpChannel* inq_channel() const { return channel; }

    /// What stands at the far end of connection `i`; null if nothing does.
    KIVObject* inq_output(int i) const;

    /// Sets the output channel of connection `i`. Without that connection nothing happens, and
    /// `value` stays the caller's.
    void set_input(int i, KIVObject* value);

private:
    DAGOpChannel* channel; // not owned
};

/// The mirror of one channel: its connections, and the value that the pass has put there.
class DAGOpChannel : public KIVObject {
public:
    DAGOpChannel(DAGOpChannelSet* channel_set, int index);
    ~DAGOpChannel() override;

    int inq_index() const { return index; }
    DAGOpChannelSet* inq_channel_set() const { return channel_set; }
    DAGOpNode* inq_node() const;
    KIVLinkedList* inq_connections_list() { return &connections; }

    /// Null if there is no connection `i`.
    DAGOpConnection* find_connection_at(int i) const;
    void add_connection(DAGOpConnection* connection);
    void remove_connection(DAGOpConnection* connection);

    /// Null while nothing constrains the channel.
    KIVObject* inq_data() const { return data.get(); }
    void set_data(gsl::owner<KIVObject*> value) { data.reset(value); }

    /// Asks the channel's data type for the operator of the pass `name`.
    void set_op(const KIVString& name, DAGOpChannelIn* otherwise);
    void set_op(const KIVString& name, DAGOpChannelOut* otherwise);
    void set_exec(DAGExec* exec);
    void drop_ops();
    void execute();

private:
    int index;
    DAGOpChannelSet* channel_set; // not owned
    KIVLinkedList connections;    // refers to what the graph keeps
    DAGOpSlot<DAGOpChannelOut> out_op;
    DAGOpSlot<DAGOpChannelIn> in_op;
    std::unique_ptr<KIVObject> data;
};

/// The mirror of a node's inputs, or of its outputs.
class DAGOpChannelSet : public KIVObject {
public:
    DAGOpChannelSet(DAGOpNode* node, int n_channels);

    DAGOpNode* inq_node() const { return node; }
    int inq_n_channels() const { return n_channels; }

    /// Null out of range.
    DAGOpChannel* inq_channel(int i) const;

private:
    DAGOpNode* node; // not owned
    int n_channels;
    std::vector<std::unique_ptr<DAGOpChannel>> channels;
};

/// The mirror of a connection, or a connection that is only proposed.
class DAGOpConnection : public KIVObject {
public:
    DAGOpConnection(DAGOpChannel* output_channel, DAGOpChannel* input_channel)
        : output_channel(output_channel), input_channel(input_channel)
    {}

    DAGOpChannel* inq_output_channel() const { return output_channel; }
    DAGOpChannel* inq_input_channel() const { return input_channel; }

private:
    DAGOpChannel* output_channel; // not owned
    DAGOpChannel* input_channel;  // not owned
};
