#include "compositor/affine/lib/hdr/CNodeZTranslate.h"

#include "kivlib/hdr/Matrix.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

CNodeZTranslate::CNodeZTranslate() : CNodeTranslate(constructor_t())
{
    auto* depth = new NumericSubColumn(1);
    add_labelled(1, depth, "Z");
    depth->set_unit_type(KIV_UNIT_DEPTH);
}

bool CNodeZTranslate::load_finished_with_abort()
{
    return XSNode::load_finished_with_abort();
}

Matrix44 CNodeZTranslate::inq_node_transform(int) const
{
    return {};
}
