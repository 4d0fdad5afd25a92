#pragma once

#include "compositor/affine/lib/hdr/CNodeTranslate.h"

/// A depth that was never put to use: its column can be keyed and nothing moves.
class CNodeZTranslate : public CNodeTranslate {
    KIV_NODE(CNodeZTranslate, CNodeTranslate);

public:
    CNodeZTranslate();
    explicit CNodeZTranslate(KIVIStream& stream) : CNodeTranslate(stream) {}

    bool load_finished_with_abort() override;
    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_translate_subcolumn() const { return find_numeric(1); }
};
