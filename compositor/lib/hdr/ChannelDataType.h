#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <vector>

class CNodeChannel;

/// The data types that a channel of an old scene could carry. Channels answer for themselves now:
/// it is only read.
class ChannelDataType : public KIVObject {
    KIV_STORED(ChannelDataType, KIVObject);

public:
    explicit ChannelDataType(int type);
    ChannelDataType(int n_types, const int* types);
    explicit ChannelDataType(CNodeChannel* channel) : channel(channel) {}
    explicit ChannelDataType(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// -1: no single type.
    int inq_current_type() const { return current_type; }
    CNodeChannel* inq_channel() const { return channel; }
    int inq_n_types() const { return static_cast<int>(types.size()); }

    /// Never for one that follows a channel.
    bool inq_is_allowable_type(int type) const;
    bool inq_can_accept(const ChannelDataType& other) const;

private:
    int current_type = -1;
    CNodeChannel* channel = nullptr; // not owned
    std::vector<int> types;
};
