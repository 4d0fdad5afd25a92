#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <cstddef>
#include <memory>
#include <vector>

class CNode;
class CNodeChannel;
class Vector2;

/// The inputs or the outputs of a node, side by side along its lower or its upper edge.
class CNodeChannelSet : public KIVObject {
    KIV_STORED(CNodeChannelSet, KIVObject);

public:
    CNodeChannelSet(CNode* node, int n_channels);
    explicit CNodeChannelSet(KIVIStream& stream);
    ~CNodeChannelSet() override;

    void storer(KIVOStream& stream) override;

    int inq_n_channels() const { return static_cast<int>(channels.size()); }
    CNode* inq_node() const { return node; }
    bool is_valid_channel(int index) const { return 0 <= index && index < inq_n_channels(); }

    /// Null out of range, -1 if it is not there.
    CNodeChannel* inq_channel(int index) const
    {
        return is_valid_channel(index) ? channels[static_cast<std::size_t>(index)].get() : nullptr;
    }
    int find_channel_index(const CNodeChannel* channel) const;

    /// What stands at the other end of a connection.
    struct Feed {
        int input;   // channel of this set
        int output;  // channel of `node`
        CNode* node; // null for a connection without an output
    };

    /// What feeds these channels, one after the other, each in the order of its connections. Valid
    /// until a graph changes.
    const std::vector<Feed>& inq_feeds() const;

    /// Whether the node has this set as its inputs, or as its outputs.
    bool inq_is_input_channel_set() const;
    bool inq_is_output_channel_set() const;

    double inq_width() const;
    double inq_min_width() const;

    /// The first channel whose strip, widened by `tolerance` on every side, holds the point, which
    /// is relative to the node; or null.
    CNodeChannel* find_channel_at(const Vector2& point) const;
    CNodeChannel* find_channel_near(const Vector2& point, double tolerance) const;

    /// Lays the strips out along the edge of a node of that width.
    void set_width(double width);

    /// Moves the strips to the edge of a node whose height has changed.
    void reset_position();

    /// The connections of channels that go have to be gone.
    void set_n_channels(int n);

private:
    void resize(int n);
    void find_feeds() const;

    CNode* node = nullptr; // not owned
    std::vector<std::unique_ptr<CNodeChannel>> channels;

    // Found for an evaluation and kept, since the next frame asks again. The count of graph changes
    // tells whether they hold; at first there are none.
    mutable std::vector<Feed> feeds;
    mutable unsigned long feeds_at = static_cast<unsigned long>(-1);
};
