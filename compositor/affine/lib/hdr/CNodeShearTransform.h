#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/NodeClass.h"

/// Turns, then scales, then shears along x, then moves. Its scales may be negative and mirror.
class CNodeShearTransform : public CNodeAffineTransform {
    KIV_NODE(CNodeShearTransform, CNodeAffineTransform);

public:
    static constexpr unsigned long NUM_SUBCOLS = 6;
    static constexpr unsigned long XPOS_SUBCOL = 1;
    static constexpr unsigned long YPOS_SUBCOL = 2;
    static constexpr unsigned long ANGLE_SUBCOL_Z = 3;
    static constexpr unsigned long SCALE_SUBCOL_X = 4;
    static constexpr unsigned long SCALE_SUBCOL_Y = 5;
    static constexpr unsigned long SHEAR_SUBCOL = 6;

    CNodeShearTransform();
    explicit CNodeShearTransform(KIVIStream& stream) : CNodeAffineTransform(stream) {}

    bool load_finished_with_abort() override;
    Matrix44 inq_node_transform(int frame) const override;

    NumericSubColumn* inq_x_translate_subcolumn() const { return find_numeric(XPOS_SUBCOL); }
    NumericSubColumn* inq_y_translate_subcolumn() const { return find_numeric(YPOS_SUBCOL); }
    NumericSubColumn* inq_z_angle_subcolumn() const { return find_numeric(ANGLE_SUBCOL_Z); }
    NumericSubColumn* inq_scale_x_subcolumn() const { return find_numeric(SCALE_SUBCOL_X); }
    NumericSubColumn* inq_scale_y_subcolumn() const { return find_numeric(SCALE_SUBCOL_Y); }
    NumericSubColumn* inq_shear_subcolumn() const { return find_numeric(SHEAR_SUBCOL); }

    Vector2 inq_translate(int frame) const;

    /// In degrees, as the column has it.
    double inq_z_angle(int frame) const;
    Vector2 inq_scale(int frame) const;

    /// How far x goes for each unit of y: a positive angle leans to the west.
    double inq_shear(int frame) const;

private:
    void let_scales_mirror();
};
