#pragma once

#include "compositor/affine/lib/hdr/CNodeTranslate.h"

/// Moves east and west: along x.
class CNodeEWTranslate : public CNodeTranslate {
    KIV_NODE(CNodeEWTranslate, CNodeTranslate);

public:
    CNodeEWTranslate();
    explicit CNodeEWTranslate(KIVIStream& stream) : CNodeTranslate(stream) {}

    bool load_finished_with_abort() override;
    Vector2 inq_translation(int frame) const override;

    NumericSubColumn* inq_translate_subcolumn() const { return find_numeric(1); }
};
