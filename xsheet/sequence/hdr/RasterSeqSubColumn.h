#pragma once

#include "xsheet/column/hdr/SubColumn.h"

/// The image that a frame shows, and those behind it as long as it holds.
class RasterSeqKeyCell : public KeyCell {
    KIV_STORED(RasterSeqKeyCell, KeyCell);

public:
    using KeyCell::KeyCell;
    RasterSeqKeyCell(const RasterSeqKeyCell& other) = default;
    explicit RasterSeqKeyCell(KIVIStream& stream) : KeyCell(stream) {}

    gsl::owner<BaseCell*> duplicate() const override;
    gsl::owner<CellData*> create_data() override;
    int inq_type() const override;

    /// A key of another scene takes an asset of this one.
    void set_sub_column(SubColumn* column) override;

    /// A key that was out of the sheet may have lost its asset to a save meanwhile.
    void added_to_subcolumn(SubColumn* column) override;

    /// Images do not blend.
    bool can_set_mode(InterpMode m) const override { return m == IM_HOLD || m == IM_STOP; }
};

/// A sequence of images: its keys hold RasterSeqCellData.
class RasterSeqSubColumn : public SubColumn {
    KIV_STORED(RasterSeqSubColumn, SubColumn);

public:
    static constexpr int TYPE = 4;

    RasterSeqSubColumn() = default;
    RasterSeqSubColumn(const RasterSeqSubColumn& other, bool flag = true);
    explicit RasterSeqSubColumn(KIVIStream& stream) : SubColumn(stream) {}

    gsl::owner<SubColumn*> duplicate() const override;
    void added_to_column(Column* to) override;
    int inq_type() const override { return TYPE; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    void get_dependencies(KIVStringList& files, bool flag) override;
    void mark_used_assets() override;

    /// The highest tag of an asset that a key names; -1 for none.
    int inq_highest_asset_id() const;
};
