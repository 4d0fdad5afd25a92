#pragma once

#include "xsheet/column/hdr/Column.h"

/// A column with the sheet's count of frames.
class FrameNumberColumn : public Column {
    KIV_STORED(FrameNumberColumn, Column);

public:
    FrameNumberColumn() = default;
    FrameNumberColumn(const FrameNumberColumn& other, bool flag = true);
    explicit FrameNumberColumn(KIVIStream& stream) : Column(stream) {}

    gsl::owner<SubColumn*> duplicate() const override;
    void init_after_construction() override;
};
