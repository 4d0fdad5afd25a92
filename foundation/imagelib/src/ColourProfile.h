#pragma once

#include "imagelib/hdr/ProfileData.h"
#include "kivlib/hdr/KIVString.h"

#include <lcms2.h>
#include <memory>

/// A colour profile, as its file has it and as the colour library knows it.
class ColourProfile {
public:
    /// Null, with a reason for the user, for what is no profile.
    static std::unique_ptr<ColourProfile> read(const KIVString& path, KIVString& reason);
    static std::unique_ptr<ColourProfile> make(ProfileData data, KIVString& reason);

    /// That of a picture. Greys, which pixels hold as equal colours, get the profile of colours
    /// that says the same of them.
    static std::unique_ptr<ColourProfile> make_for_picture(const ProfileData& data);

    /// The one that is meant where nothing is said; it has no data.
    static std::unique_ptr<ColourProfile> make_srgb();

    ~ColourProfile();
    ColourProfile(const ColourProfile&) = delete;
    ColourProfile& operator=(const ColourProfile&) = delete;

    /// Whether it tells of a device's red, green and blue.
    bool is_of_colours() const;

    const ProfileData& inq_data() const { return data; }
    cmsHPROFILE inq_handle() const { return handle; }

private:
    ColourProfile(cmsHPROFILE handle, ProfileData data) : handle(handle), data(std::move(data)) {}

    cmsHPROFILE handle; // owned
    ProfileData data;
};

/// The library's state in this process. It prints nothing.
cmsContext inq_colour_context();

/// What the library has said last since this was called, or `otherwise`.
KIVString take_colour_words(const char* otherwise);
