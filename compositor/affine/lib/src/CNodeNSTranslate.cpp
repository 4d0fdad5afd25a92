#include "compositor/affine/lib/hdr/CNodeNSTranslate.h"

#include "xsheet/numeric/hdr/NumericXYSubColumn.h"

CNodeNSTranslate::CNodeNSTranslate() : CNodeTranslate(constructor_t())
{
    add_labelled(1, new NumericYSubColumn, "N/S");
}

// The column with the label 1 is the live one here: nothing is converted.
bool CNodeNSTranslate::load_finished_with_abort()
{
    return XSNode::load_finished_with_abort();
}

Vector2 CNodeNSTranslate::inq_translation(int frame) const
{
    return {0.0, inq_value(inq_translate_subcolumn(), frame, 0.0)};
}
