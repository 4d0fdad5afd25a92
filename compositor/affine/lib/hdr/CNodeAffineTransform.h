#pragma once

#include "xsheet/node/hdr/DWNode.h"

class MoveColumn;
class NumericSubColumn;

/// A node that moves, turns or scales what it is fed, by a matrix for each frame. It touches no
/// pixels: the matrix joins the request on its way to the sources.
class CNodeAffineTransform : public DWNode {
    KIV_STORED_ABSTRACT(CNodeAffineTransform, DWNode);

public:
    CNodeAffineTransform() = default;
    explicit CNodeAffineTransform(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int requested_type) override;
    bool inq_is_generic() const override { return true; }

protected:
    /// Before version 95 some of these nodes stored numbers that have no use today.
    static void drop_old_numbers(KIVIStream& stream, int count);

    /// Adds a sub-column that gets its label here.
    void add_labelled(unsigned long label, gsl::owner<SubColumn*> sub_column,
                      const KIVString& name);

    /// Null if there is none under the label, or one of another kind.
    NumericSubColumn* find_numeric(unsigned long label) const;
    MoveColumn* find_move(unsigned long label) const;

    /// An element of a numeric column at a frame; `otherwise` without the column.
    static double inq_value(NumericSubColumn* column, int frame, double otherwise, int element = 0);

    /// The same for an angle: the column counts degrees.
    static double inq_radians(NumericSubColumn* angle, int frame);

    /// The place that a move column gives for a frame; the origin without the column.
    static Vector2 inq_place(MoveColumn* column, int frame);

    enum class OldPosition { X_AND_Y, ONE_COLUMN };

    /// Old files keep a position in sub-column 1, or x in 1 and y in 2. If there is no move column
    /// under `label`, a new one takes over their keys.
    void convert_old_position(unsigned long label, OldPosition form);

private:
    gsl::owner<NumericSubColumn*> take_out_numeric(unsigned long label);
};
