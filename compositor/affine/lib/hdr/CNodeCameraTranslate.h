#pragma once

#include "compositor/affine/lib/hdr/CNodeTranslate.h"

/// The camera's move of old scenes. It moves the picture with the camera, not against it, by the
/// "Move" column that it gets when it is loaded; a new one does not move.
class CNodeCameraTranslate : public CNodeTranslate {
    KIV_NODE(CNodeCameraTranslate, CNodeTranslate);

public:
    CNodeCameraTranslate();
    explicit CNodeCameraTranslate(KIVIStream& stream) : CNodeTranslate(stream) {}

    NumericSubColumn* inq_translate_subcolumn() const { return find_numeric(1); }
};
