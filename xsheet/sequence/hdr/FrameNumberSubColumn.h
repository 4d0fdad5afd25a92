#pragma once

#include "xsheet/sequence/hdr/TextCellSubColumn.h"

/// How a frame's number is printed. The numbers are stored; any other prints nothing.
enum FrameNumberFormat : int {
    FRAME_NUMBER_PLAIN = 1,
    FRAME_NUMBER_DASH = 2,  // "- 12"
    FRAME_NUMBER_QUOTE = 3, // "' 12"
    FRAME_NUMBER_FOOT = 4,  // from 1 to 16 within each foot of film
    FRAME_NUMBER_TIME = 5   // minutes, seconds and frames, at 24 frames a second
};

/// The printed number of one frame.
class FrameNumberCellData : public CellData {
    KIV_STORED(FrameNumberCellData, CellData);

public:
    using CellData::CellData;
    FrameNumberCellData(const FrameNumberCellData& other) = default;
    explicit FrameNumberCellData(KIVIStream& stream) : CellData(stream) {}

    gsl::owner<CellData*> duplicate() const override;

    virtual void set_number(int number, FrameNumberFormat format);
};

/// One frame of a frame number column.
class FrameNumberKeyCell : public TextKeyCell {
    KIV_STORED(FrameNumberKeyCell, TextKeyCell);

public:
    using TextKeyCell::TextKeyCell;
    FrameNumberKeyCell(const FrameNumberKeyCell& other) = default;
    explicit FrameNumberKeyCell(KIVIStream& stream) : TextKeyCell(stream) {}

    gsl::owner<BaseCell*> duplicate() const override;
    gsl::owner<CellData*> create_data() override;
    int inq_type() const override;
    bool is_editable() const { return false; }

protected:
    /// Prints the number itself, whatever the scene's trim.
    void set_number(int n) override;
};

/// The sheet's count of frames: a key on each, printed as the scene's trim has it. Nobody edits it.
class FrameNumberSubColumn : public TextCellSubColumn {
    KIV_STORED(FrameNumberSubColumn, TextCellSubColumn);

public:
    static constexpr int TYPE = 7;

    FrameNumberSubColumn() = default;
    FrameNumberSubColumn(const FrameNumberSubColumn& other, bool flag = true);
    explicit FrameNumberSubColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override;
    void init_after_construction() override;

    /// Gets its keys once the column lies in a sheet, which knows how many frames there are.
    void added_to_column(Column* to) override;
    int inq_type() const override { return TYPE; }
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool can_remove_key(KeyCell*) override { return false; }
    bool can_set_length(int frames) override { return frames > 0; }

    /// Makes and deletes keys so that there is one on each frame.
    void set_length(int frames) override;
    bool is_frame_the_same(int, int) override { return true; }

    /// Its keys count for nothing.
    void inq_key_range(int*, int*) override {}
    gsl::owner<SubColPrefs*> create_preferences_object() override;
    void apply_preferences_object(SubColPrefs* prefs) override;

    /// Searches do not stop here.
    int find(const KIVString&, int, int) override { return 0; }

    /// Prints all numbers again.
    virtual void reset_frame_numbers();

    FrameNumberFormat inq_format() const { return format; }
    void set_format(FrameNumberFormat new_format);

private:
    template <class Record> void record(Record& r);
    void print(KeyCell* key);
    void make_key_on(int frame);
    void delete_keys_behind(int frame);
    int inq_trimmed_val(int frame);

    FrameNumberFormat format = FRAME_NUMBER_PLAIN;
};
