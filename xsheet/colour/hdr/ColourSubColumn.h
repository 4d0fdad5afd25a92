#pragma once

class ColourTransform;

#include "kivlib/hdr/KIVColour.h"
#include "kivlib/hdr/KIVString.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

/// The time line of a colour, which goes from key to key in one of three colour spaces.
class ColourSubColumn : public NumericSubColumn {
    KIV_STORED(ColourSubColumn, NumericSubColumn);

public:
    /// Modes of interpolation. Any other blends as CMY does.
    enum { RGB_INTERP = 1, HSV_INTERP = 2, CMY_INTERP = 3 };

    ColourSubColumn();
    explicit ColourSubColumn(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    gsl::owner<SubColumn*> duplicate() const override { return new ColourSubColumn(*this); }
    int inq_type() const override { return 8; }
    KIVString inq_summary() override;
    gsl::owner<KeyCell*> create_new_key_with_label(int new_label) override;
    bool load_finished_with_abort() override;
    gsl::owner<SubColPrefs*> create_preferences_object() override;
    void apply_preferences_object(SubColPrefs* prefs) override;

    KIVColour inq_colour(int frame);
    int inq_colour_interp_mode() const { return colour_interp_mode; }
    void set_colour_interp_mode(int mode);

    /// The profile that the colours of the keys are meant for; empty for none.
    const KIVString& inq_profile() const { return profile; }

private:
    template <class Record> void record(Record& r);
    void change_to_output_profile();
    void transform_keys(const ColourTransform& transform);

    int colour_interp_mode = HSV_INTERP;
    KIVString profile;
};
