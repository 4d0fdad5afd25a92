#pragma once

class NumericSubColumn;
class PathSubColumn;

#include "kivlib/hdr/Vector.h"
#include "xsheet/column/hdr/Column.h"

/// Where something is, frame by frame: keyed along a curve, as one T column, or as X and Y apart.
class MoveColumn : public Column {
    KIV_STORED(MoveColumn, Column);

public:
    enum { PATH_MODE = 0, TCOL_MODE = 1, XYCOL_MODE = 2 };

    /// Labels of the sub-columns.
    enum { XPOS_SUBCOL = 1, YPOS_SUBCOL = 2, TPOS_SUBCOL = 3, PPOS_SUBCOL = 4 };

    MoveColumn() = default;
    explicit MoveColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new MoveColumn(*this); }
    void init_after_construction() override;
    int inq_type() const override { return 20; }
    int inq_header_line() override { return -1; }
    bool can_remove() const override { return false; }
    gsl::owner<SubColPrefs*> create_preferences_object() override;
    void apply_preferences_object(SubColPrefs* prefs) override;

    /// Stores the mode and leaves the sub-columns alone.
    virtual void really_set_mode(int new_mode) { mode = new_mode; }
    virtual int inq_mode() const { return mode; }

    /// Null in the other modes.
    virtual PathSubColumn* inq_path_column();

    /// The place on a frame; (0, 0) without a sub-column that says.
    virtual Vector2 inq_translation(int frame);

    /// Takes over the sub-columns of an old node: X and Y, or one T column alone.
    void convert_old_file(gsl::owner<NumericSubColumn*> a, gsl::owner<NumericSubColumn*> b);

protected:
    /// Changes the mode. The keys of the old one go.
    void prime_column(int new_mode);

private:
    template <class Record> void record(Record& r);
    void delete_sub_columns();
    void add_new(gsl::owner<SubColumn*> sub, unsigned sub_label, const KIVString& header,
                 SubColumn* after = nullptr);
    void add_x_and_y();
    NumericSubColumn* find_numeric(unsigned long sub_label) const;

    int mode = XYCOL_MODE;
};
