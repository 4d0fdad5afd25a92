#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/ObjectProvider.h"

#include <cstdint>
#include <vector>

class KIVColour;
class KIVPixmap;

/// The way of a colour from one profile to the output profile.
class ColourTransform {
public:
    virtual ~ColourTransform() = default;
    virtual void transform(KIVColour& colour) const = 0;
};

/// Profiles and gamma of what is shown or written. This release reads no profiles: every one that
/// is asked for is an error.
class ColourManager : public ObjectProvider {
public:
    /// Empty: no profile. A profile that can't be had leaves an error, and the old one in force.
    void set_output_profile_path(const KIVString& path);
    const KIVString& inq_output_profile_path() const { return output_profile; }

    /// The exponent that `add_gamma` raises colours to, above 0; 1 changes nothing.
    void set_output_gamma(double exponent);
    void add_gamma(KIVPixmap* pixmap);

    /// Of the last operation that sets or looks for a profile.
    bool inq_has_error() const { return !error.is_null(); }
    const KIVString& inq_error_msg() const { return error; }

    /// -1, with an error, for a profile that can't be had.
    int new_transform_id(const KIVString& profile);

    /// Null for an id that is not given out; unlock it none the less.
    ColourTransform* lock(int id);

    void unlock(int id) override;
    void hold_object_id(int id) override;
    void delete_object_id(int id) override;

private:
    KIVString output_profile;
    KIVString error;
    double gamma = 1.0;
    std::vector<std::uint8_t> table_8; // of the gamma; empty until it is used
    std::vector<std::uint16_t> table_16;
};

/// The one of the process.
ColourManager* inq_colour_manager();
