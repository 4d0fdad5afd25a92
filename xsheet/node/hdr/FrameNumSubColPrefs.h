#pragma once

#include "xsheet/node/hdr/SubColPrefs.h"
#include "xsheet/sequence/hdr/FrameNumberSubColumn.h"

/// How a user likes frame numbers to be printed.
class FrameNumSubColPrefs : public SubColPrefs {
    KIV_STORED(FrameNumSubColPrefs, SubColPrefs);

public:
    explicit FrameNumSubColPrefs(const FrameNumberSubColumn* sub_column);
    explicit FrameNumSubColPrefs(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    FrameNumberFormat inq_format() const { return format; }

private:
    template <class Record> void record(Record& r);

    FrameNumberFormat format = FRAME_NUMBER_PLAIN;
};
