#pragma once

#include "kivlib/hdr/KIVString.h"

/// How a value is shown. The numbers are stored. World units are 60 to the inch and to the field.
enum KIVUnitType : int {
    KIV_UNIT_WORLD = 0,       // as it stands
    KIV_UNIT_FIELDS = 1,      // of the field chart; a vertical field is lower by its ratio
    KIV_UNIT_FIELD_WIDTH = 2, // a camera's width, in fields
    KIV_UNIT_CENTIMETRES = 3,
    KIV_UNIT_INCHES = 4,
    KIV_UNIT_PIXELS = 5, // one to the world unit
    KIV_UNIT_DEPTH = 6,  // as it stands
    KIV_UNIT_MILLIMETRES = 7,
    KIV_UNIT_FRAMES = 8, // whole
    KIV_UNIT_PERCENT = 9,
    KIV_UNIT_DEGREES = 10
};

/// Turns values into the texts that people read and type, and back.
class KIVDefaultUnitHandler {
public:
    /// Width over height of the field chart.
    void set_aspect_ratio(double ratio) { aspect_ratio = ratio; }
    void set_default_unit(KIVUnitType type) { unit = type; }

    /// Decimal places shown.
    void set_precision(int places) { precision = places; }

    /// The peg offset of the scene, in hundredths of a field.
    void set_unit_offset(double offset) { unit_offset = offset; }
    double inq_unit_offset() const { return unit_offset; }

    /// The text of a horizontal or vertical value. With `is_angle` the value is in degrees
    /// whatever the unit.
    KIVString x_to_units(double value, bool is_angle) const;
    KIVString y_to_units(double value, bool is_angle) const;

    /// The value of a text: a number in the default unit, or with the sign of another one. False,
    /// and no change, if the text is none.
    bool x_to_internal(const KIVString& text, double* value, bool is_angle) const;
    bool y_to_internal(const KIVString& text, double* value, bool is_angle) const;

private:
    enum class Axis { X, Y };

    /// So many units are so large a value.
    struct Scale {
        double values;
        double units;
    };

    KIVString to_units(double value, KIVUnitType shown, Axis axis) const;
    bool to_internal(const KIVString& text, double* value, KIVUnitType expected, Axis axis) const;
    Scale inq_scale(KIVUnitType type, Axis axis) const;

    KIVUnitType unit = KIV_UNIT_FIELDS;
    int precision = 2;
    double aspect_ratio = 1.3714285714285714;
    double unit_offset = 5000.0;
};

/// The handler whose aspect ratio follows the scene in hand.
KIVDefaultUnitHandler* inq_default_unit_handler();
