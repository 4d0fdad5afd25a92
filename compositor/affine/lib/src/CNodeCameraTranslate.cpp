#include "compositor/affine/lib/hdr/CNodeCameraTranslate.h"

#include "xsheet/numeric/hdr/NumericSubColumn.h"

CNodeCameraTranslate::CNodeCameraTranslate() : CNodeTranslate(constructor_t())
{
    add_labelled(1, new NumericSubColumn(2), "E/W - N/S");
}
