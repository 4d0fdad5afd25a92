#include "compositor/affine/lib/hdr/CNodeEWTranslate.h"

#include "xsheet/numeric/hdr/NumericSubColumn.h"

// A plain numeric column, where north and south has the Y kind.
CNodeEWTranslate::CNodeEWTranslate() : CNodeTranslate(constructor_t())
{
    add_labelled(1, new NumericSubColumn(1), "E/W");
}

// The column with the label 1 is the live one here: nothing is converted.
bool CNodeEWTranslate::load_finished_with_abort()
{
    return XSNode::load_finished_with_abort();
}

Vector2 CNodeEWTranslate::inq_translation(int frame) const
{
    return {inq_value(inq_translate_subcolumn(), frame, 0.0), 0.0};
}
