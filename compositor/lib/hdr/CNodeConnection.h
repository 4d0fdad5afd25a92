#pragma once

#include "kivlib/hdr/StoredClass.h"

class CNodeChannel;
class DisplayConnection;

/// Joins one output channel to one input channel and stands on the lists of both. The graph owns
/// it.
class CNodeConnection : public KIVObject {
    KIV_STORED(CNodeConnection, KIVObject);

public:
    CNodeConnection(CNodeChannel* output, CNodeChannel* input)
        : output_channel(output), input_channel(input)
    {}
    explicit CNodeConnection(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    CNodeChannel* inq_output_channel() const { return output_channel; }
    CNodeChannel* inq_input_channel() const { return input_channel; }
    bool inq_is_selected() const { return is_selected; }
    DisplayConnection* inq_display_connection() const { return display_connection; }

    void set_output_channel(CNodeChannel* channel);
    void set_input_channel(CNodeChannel* channel);
    void set_is_selected(bool selected) { is_selected = selected; }
    void set_display_connection(DisplayConnection* display) { display_connection = display; }

private:
    template <class Record> void record(Record& r);

    CNodeChannel* output_channel = nullptr; // not owned
    CNodeChannel* input_channel = nullptr;  // not owned
    bool is_selected = false;
    DisplayConnection* display_connection = nullptr; // not owned
};
