#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Moves by its "Move" column.
class CNodeTranslate : public CNodeAffineTransform {
    KIV_NODE(CNodeTranslate, CNodeAffineTransform);

public:
    static constexpr unsigned long NUM_SUBCOLS = 2;
    static constexpr unsigned long TPOS_SUBCOL = 1; // in old files
    static constexpr unsigned long POS_SUBCOL = 2;

    CNodeTranslate();
    explicit CNodeTranslate(KIVIStream& stream);

    bool load_finished_with_abort() override;
    Matrix44 inq_node_transform(int frame) const override;

    virtual Vector2 inq_offset(int frame) const;
    virtual Vector2 inq_translation(int frame) const;

    MoveColumn* inq_pos_subcolumn() const { return find_move(POS_SUBCOL); }

protected:
    struct constructor_t {};

    /// Without sub-columns: a subclass adds its own.
    explicit CNodeTranslate(constructor_t) {}
};
