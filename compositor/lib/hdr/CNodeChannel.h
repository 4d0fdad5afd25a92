#pragma once

#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "kivlib/hdr/KIVLinkedList.h"
#include "kivlib/hdr/KIVRectangle.h"

class CNode;
class CNodeConnection;

/// One input or output of a node: its connections in compositing order, and the strip along the
/// node's edge where the graph editor shows it, relative to the node's centre with y upwards.
class CNodeChannel : public KIVObject {
    KIV_STORED(CNodeChannel, KIVObject);

public:
    explicit CNodeChannel(CNodeChannelSet* channel_set);
    explicit CNodeChannel(KIVIStream& stream);
    ~CNodeChannel() override;

    void storer(KIVOStream& stream) override;

    CNodeChannelSet* inq_channel_set() const { return channel_set; }
    CNode* inq_node() const { return channel_set ? channel_set->inq_node() : nullptr; }
    bool inq_is_selected() const { return is_selected; }
    bool inq_is_in_macro() const { return is_in_macro; }

    /// `CNodeConnection`s, which belong to the graph.
    KIVLinkedList* inq_connections_list() const { return connections.get(); }

    /// -1 if its set does not hold it.
    int find_channel_index() const;

    /// The type that the node's descriptor declares; 0 without one.
    int find_data_type() const;

    /// Whether the order of the connections means something; wildcards take it that it does.
    bool inq_can_order_data() const;

    /// Null out of range, -1 if it is not there.
    CNodeConnection* find_connection_at(int index) const;
    int find_index_of_connection(const CNodeConnection* connection) const;

    double inq_min_width() const;
    double inq_width() const { return border_rect.inq_width(); }
    const KIVRectangle& inq_border_rect() const { return border_rect; }

    /// Where a connection ends on this channel; the zero vector if it is not on the list. With
    /// `between`, the gap before the connection at that index.
    Vector2 inq_connection_location(const CNodeConnection* connection) const;
    Vector2 inq_connection_location(int index, bool between) const;

    /// Where in the order a connection dropped at `point` goes.
    int find_new_con_index(const Vector2& point) const;

    void set_channel_set(CNodeChannelSet* set);
    void set_is_selected(bool selected) { is_selected = selected; }
    void set_is_in_macro(bool in_macro) { is_in_macro = in_macro; }
    void set_border_rect(const KIVRectangle& strip) { border_rect = strip; }

    /// At the head of the list for an index below 0.
    void add_connection(CNodeConnection* connection, int index);
    void attach_connection(CNodeConnection* connection, int index);

    /// One that is not on the list is reported.
    void remove_connection(CNodeConnection* connection);

private:
    friend class CNodeChannelSet;

    template <class Record> void record(Record& r);
    bool is_ordered_input() const;
    double inq_step() const;

    CNodeChannelSet* channel_set = nullptr; // not owned
    std::unique_ptr<KIVLinkedList> connections;
    KIVRectangle border_rect;
    bool is_selected = false;
    bool is_in_macro = false;

    // Where the channel was put; it may have been told of another set since.
    const CNodeChannelSet* holder = nullptr; // not owned
    int index_in_holder = -1;
};
