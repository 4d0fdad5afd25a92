#include "compositor/affine/lib/hdr/CNodeTranslate.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/move/hdr/MoveColumn.h"

CNodeTranslate::CNodeTranslate()
{
    add_labelled(POS_SUBCOL, new MoveColumn, "Move");
}

CNodeTranslate::CNodeTranslate(KIVIStream& stream) : CNodeAffineTransform(stream)
{
    drop_old_numbers(stream, 1);
}

bool CNodeTranslate::load_finished_with_abort()
{
    const bool abort = XSNode::load_finished_with_abort();
    convert_old_position(POS_SUBCOL, OldPosition::ONE_COLUMN);
    return abort;
}

Matrix44 CNodeTranslate::inq_node_transform(int frame) const
{
    const Vector2 move = inq_translation(frame);
    Matrix44 m;
    m.set_translation(Vector3(move.x(), move.y(), 1.0));
    return m;
}

Vector2 CNodeTranslate::inq_offset(int frame) const
{
    return inq_translation(frame);
}

Vector2 CNodeTranslate::inq_translation(int frame) const
{
    return inq_place(inq_pos_subcolumn(), frame);
}
