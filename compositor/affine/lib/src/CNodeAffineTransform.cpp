#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"

#include "compositor/affine/lib/hdr/CNodeAffineTransformOp.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/object_cast.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

KIV_STORED_CLASS(CNodeAffineTransform, -1);

namespace {
constexpr FormatVersions HAS_OLD_NUMBERS = before(95);

constexpr unsigned long OLD_POSITION = 1;
constexpr unsigned long OLD_Y_POSITION = 2;

constexpr double PI = 3.141592653589793;
constexpr double PART_OF_HALF_TURN = 0.005555555555555556;
} // namespace

void CNodeAffineTransform::drop_old_numbers(KIVIStream& stream, int count)
{
    RecordReader reader(stream);
    for (int i = 0; i < count; ++i)
        reader.dropped_int(HAS_OLD_NUMBERS);
}

gsl::owner<CNodeOp*> CNodeAffineTransform::new_nodeop(int)
{
    return new CNodeAffineTransformOp(this);
}

void CNodeAffineTransform::add_labelled(unsigned long label, gsl::owner<SubColumn*> sub_column,
                                        const KIVString& name)
{
    sub_column->set_label(static_cast<unsigned>(label));
    add_subcolumn(label, sub_column, name);
}

NumericSubColumn* CNodeAffineTransform::find_numeric(unsigned long label) const
{
    return object_cast<NumericSubColumn>(inq_subcolumn(label));
}

MoveColumn* CNodeAffineTransform::find_move(unsigned long label) const
{
    return object_cast<MoveColumn>(inq_subcolumn(label));
}

double CNodeAffineTransform::inq_value(NumericSubColumn* column, int frame, double otherwise,
                                       int element)
{
    return column ? column->inq_element(element, frame) : otherwise;
}

double CNodeAffineTransform::inq_radians(NumericSubColumn* angle, int frame)
{
    return inq_value(angle, frame, 0.0) * PI * PART_OF_HALF_TURN;
}

Vector2 CNodeAffineTransform::inq_place(MoveColumn* column, int frame)
{
    return column ? column->inq_translation(frame) : Vector2();
}

void CNodeAffineTransform::convert_old_position(unsigned long label, OldPosition form)
{
    if (!inq_column() || inq_subcolumn(label))
        return;
    auto* move = new MoveColumn;
    add_labelled(label, move, "Move");
    if (!find_numeric(OLD_POSITION))
        return;
    NumericSubColumn* x = take_out_numeric(OLD_POSITION);
    move->convert_old_file(x, form == OldPosition::X_AND_Y ? take_out_numeric(OLD_Y_POSITION)
                                                           : nullptr);
}

gsl::owner<NumericSubColumn*> CNodeAffineTransform::take_out_numeric(unsigned long label)
{
    NumericSubColumn* sub_column = find_numeric(label);
    if (sub_column)
        inq_column()->remove_sub_column(sub_column);
    return sub_column;
}
