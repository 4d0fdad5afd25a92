#include "imagelib/src/ColourProfile.h"

#include "kivlib/hdr/FileHandle.h"

#include <new>
#include <sys/stat.h>

namespace {
/// Taken without memory, for want of which no exception may pass through the library.
char our_words[256] = "";

void note_words(cmsContext /*context*/, cmsUInt32Number /*code*/, const char* text)
{
    std::strncpy(our_words, text, sizeof(our_words) - 1);
}

cmsContext make_context()
{
    cmsContext context = cmsCreateContext(nullptr, nullptr);
    cmsSetLogErrorHandlerTHR(context, note_words);
    return context;
}

bool read_data(const KIVString& path, ProfileData& data, KIVString& reason)
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat state = {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &state) != 0) {
        reason = inq_system_error();
        return false;
    }
    if (!S_ISREG(state.st_mode) || state.st_size == 0 || state.st_size > LARGEST_PROFILE) {
        reason = "it is no colour profile";
        return false;
    }
    data.resize(static_cast<std::size_t>(state.st_size));
    if (file.read_all(reinterpret_cast<char*>(data.data()), data.size()))
        return true;
    reason = "the file can't be read";
    return false;
}

/// Of equal colours only the common curve matters, and not what the colours are.
cmsHPROFILE make_from_greys(cmsHPROFILE greys)
{
    auto* curve = static_cast<cmsToneCurve*>(cmsReadTag(greys, cmsSigGrayTRCTag));
    if (!curve)
        return nullptr;
    constexpr cmsCIExyY WHITE = {0.3127, 0.3290, 1.0};
    constexpr cmsCIExyYTRIPLE COLOURS = {{0.64, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve* const curves[] = {curve, curve, curve};
    return cmsCreateRGBProfileTHR(inq_colour_context(), &WHITE, &COLOURS, curves);
}
} // namespace

cmsContext inq_colour_context()
{
    static const cmsContext context = make_context();
    return context;
}

KIVString take_colour_words(const char* otherwise)
{
    const KIVString words = our_words[0] == '\0' ? otherwise : our_words;
    our_words[0] = '\0';
    return words;
}

std::unique_ptr<ColourProfile> ColourProfile::read(const KIVString& path, KIVString& reason)
{
    ProfileData data;
    return read_data(path, data, reason) ? make(std::move(data), reason) : nullptr;
}

std::unique_ptr<ColourProfile> ColourProfile::make(ProfileData data, KIVString& reason)
{
    cmsHPROFILE handle = nullptr;
    if (!data.empty() && data.size() <= LARGEST_PROFILE)
        handle = cmsOpenProfileFromMemTHR(inq_colour_context(), data.data(),
                                          static_cast<cmsUInt32Number>(data.size()));
    if (handle)
        return std::unique_ptr<ColourProfile>(new ColourProfile(handle, std::move(data)));
    reason = take_colour_words("it is no colour profile");
    return nullptr;
}

std::unique_ptr<ColourProfile> ColourProfile::make_for_picture(const ProfileData& data)
{
    KIVString reason;
    std::unique_ptr<ColourProfile> profile = make(data, reason);
    if (!profile || cmsGetColorSpace(profile->handle) != cmsSigGrayData)
        return profile;
    cmsHPROFILE colours = make_from_greys(profile->handle);
    return std::unique_ptr<ColourProfile>(colours ? new ColourProfile(colours, data) : nullptr);
}

std::unique_ptr<ColourProfile> ColourProfile::make_srgb()
{
    cmsHPROFILE handle = cmsCreate_sRGBProfileTHR(inq_colour_context());
    return std::unique_ptr<ColourProfile>(handle ? new ColourProfile(handle, {}) : nullptr);
}

ColourProfile::~ColourProfile()
{
    cmsCloseProfile(handle);
}

bool ColourProfile::is_of_colours() const
{
    switch (cmsGetDeviceClass(handle)) {
    case cmsSigLinkClass:
    case cmsSigAbstractClass:
    case cmsSigNamedColorClass:
        return false;
    default:
        return cmsGetColorSpace(handle) == cmsSigRgbData;
    }
}
