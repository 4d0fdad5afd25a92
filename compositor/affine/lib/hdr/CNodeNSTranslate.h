#pragma once

#include "compositor/affine/lib/hdr/CNodeTranslate.h"

/// Moves north and south: along y.
class CNodeNSTranslate : public CNodeTranslate {
    KIV_NODE(CNodeNSTranslate, CNodeTranslate);

public:
    CNodeNSTranslate();
    explicit CNodeNSTranslate(KIVIStream& stream) : CNodeTranslate(stream) {}

    bool load_finished_with_abort() override;
    Vector2 inq_translation(int frame) const override;

    NumericSubColumn* inq_translate_subcolumn() const { return find_numeric(1); }
};
