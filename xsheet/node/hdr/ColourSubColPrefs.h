#pragma once

class ColourSubColumn;

#include "xsheet/node/hdr/SubColPrefs.h"

/// The colour space that a user likes to go from key to key in.
class ColourSubColPrefs : public SubColPrefs {
    KIV_STORED(ColourSubColPrefs, SubColPrefs);

public:
    explicit ColourSubColPrefs(const ColourSubColumn* sub_column);
    explicit ColourSubColPrefs(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// One of those of ColourSubColumn.
    int inq_mode() const { return mode; }

private:
    template <class Record> void record(Record& r);

    int mode = 0;
};
