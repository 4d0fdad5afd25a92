#pragma once

#include "xsheet/column/hdr/SubColumn.h"

/// A text from a frame on.
class TextKeyCell : public KeyCell {
    KIV_STORED(TextKeyCell, KeyCell);

public:
    using KeyCell::KeyCell;
    TextKeyCell(const TextKeyCell& other) = default;
    explicit TextKeyCell(KIVIStream& stream) : KeyCell(stream) {}

    gsl::owner<BaseCell*> duplicate() const override;
    int inq_type() const override;
};

/// Free texts.
class TextCellSubColumn : public SubColumn {
    KIV_STORED(TextCellSubColumn, SubColumn);

public:
    static constexpr int TYPE = 9;

    TextCellSubColumn() = default;
    TextCellSubColumn(const TextCellSubColumn& other, bool flag = true);
    explicit TextCellSubColumn(KIVIStream& stream) : SubColumn(stream) {}

    gsl::owner<SubColumn*> duplicate() const override;
    int inq_type() const override { return TYPE; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
};
