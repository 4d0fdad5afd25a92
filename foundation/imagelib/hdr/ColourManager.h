#pragma once

#include "imagelib/hdr/ProfileData.h"
#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/ObjectProvider.h"

#include <cstdint>
#include <memory>
#include <vector>

class KIVColour;
class KIVPixmap;

/// The way of colours from one profile to the output profile.
class ColourTransform {
public:
    virtual ~ColourTransform() = default;

    /// Alpha stays as it is.
    virtual void transform(KIVColour& colour) const = 0;

    /// All pixels, in place. False, and no change, without memory or without alpha.
    virtual bool transform(KIVPixmap& picture) = 0;
};

/// Profiles and gamma of what is shown or written.
class ColourManager : public ObjectProvider {
public:
    ColourManager();
    ~ColourManager() override;
    ColourManager(const ColourManager&) = delete;
    ColourManager& operator=(const ColourManager&) = delete;

    /// Empty: no profile. A profile that can't be had, or that isn't that of a device's red, green
    /// and blue, leaves an error, and the old one in force.
    void set_output_profile_path(const KIVString& path);
    const KIVString& inq_output_profile_path() const;

    /// The profile itself.
    const ProfileData& inq_output_profile_data() const;

    /// The profile that the colours of finished frames are in, for their files. Empty for none:
    /// also where a gamma has made other colours of them.
    const ProfileData& inq_frame_profile_data() const;

    /// Another number whenever the output profile is another; 0 as long as there was none.
    int inq_output_revision() const;

    /// Brings a picture from the profile that its file holds to the output profile. One without a
    /// profile, or with a profile that can't be used, counts as sRGB. False without memory.
    bool bring_to_output(KIVPixmap& picture, const ProfileData& embedded);

    /// The exponent that `add_gamma` raises colours to, above 0; 1 changes nothing. Where alpha
    /// covers in part it is the colour that is raised, and not its share of the pixel.
    void set_output_gamma(double exponent);
    void add_gamma(KIVPixmap* pixmap);

    /// Of the last operation that sets or looks for a profile.
    bool inq_has_error() const { return !error.is_null(); }
    const KIVString& inq_error_msg() const { return error; }

    /// An id, from 0, for the way from the profile of the file to the output profile, with one hold
    /// on it. A file has one id. Nothing is read. Without memory it throws, as `new` does, and
    /// nothing has changed.
    int new_transform_id(const KIVString& profile);

    /// The way to the output profile that is in force, until the matching unlock. Null, with an
    /// error, if a profile can't be had, memory is lacking or there is no output profile; null for
    /// an id that is not given out. Unlock it none the less.
    ColourTransform* lock(int id);

    void unlock(int id) override;
    void hold_object_id(int id) override;
    void delete_object_id(int id) override;

private:
    struct Profiles;

    const std::unique_ptr<Profiles> profiles;
    KIVString error;
    double gamma = 1.0;
    std::vector<std::uint8_t> table_8; // of the gamma; empty until it is used
    std::vector<std::uint16_t> table_16;
};

/// The one of the process.
ColourManager* inq_colour_manager();
