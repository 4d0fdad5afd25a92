#pragma once

#include "imagelib/hdr/ColourManager.h"

#include <lcms2.h>
#include <memory>
#include <string>

// Colour profiles made for the test.

/// That of a screen whose red and green are swapped; otherwise sRGB.
inline cmsHPROFILE make_swapping_profile()
{
    constexpr cmsCIExyY WHITE = {0.3127, 0.3290, 1.0};
    constexpr cmsCIExyYTRIPLE COLOURS = {{0.30, 0.60, 1.0}, {0.64, 0.33, 1.0}, {0.15, 0.06, 1.0}};
    constexpr double CURVE[] = {2.4, 1.0 / 1.055, 0.055 / 1.055, 1.0 / 12.92, 0.04045};
    cmsToneCurve* curve = cmsBuildParametricToneCurve(nullptr, 4, CURVE);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&WHITE, &COLOURS, curves);
    cmsFreeToneCurve(curve);
    return profile;
}

/// The same colours as `screen`, told by a table as those of film are.
inline cmsHPROFILE make_table_profile(cmsHPROFILE screen)
{
    constexpr unsigned GRID = 33;
    const auto sample = [](const cmsUInt16Number* in, cmsUInt16Number* out, void* transform) {
        cmsDoTransform(transform, in, out, 1);
        return TRUE;
    };
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigRgbData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
    cmsHPROFILE lab = cmsCreateLab2Profile(nullptr);
    for (const bool is_back : {false, true}) {
        cmsHTRANSFORM transform =
            cmsCreateTransform(is_back ? lab : screen, is_back ? TYPE_LabV2_16 : TYPE_RGB_16,
                               is_back ? screen : lab, is_back ? TYPE_RGB_16 : TYPE_LabV2_16,
                               INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
        cmsStage* table = cmsStageAllocCLut16bit(nullptr, GRID, 3, 3, nullptr);
        cmsStageSampleCLut16bit(table, sample, transform, 0);
        cmsPipeline* way = cmsPipelineAlloc(nullptr, 3, 3);
        cmsPipelineInsertStage(way, cmsAT_END, table);
        cmsWriteTag(profile, is_back ? cmsSigBToA0Tag : cmsSigAToB0Tag, way);
        cmsPipelineFree(way);
        cmsDeleteTransform(transform);
    }
    cmsCloseProfile(lab);
    return profile;
}

/// Closes the profile.
inline ProfileData take_data(cmsHPROFILE profile)
{
    cmsUInt32Number bytes = 0;
    cmsSaveProfileToMem(profile, nullptr, &bytes);
    ProfileData data(bytes);
    cmsSaveProfileToMem(profile, data.data(), &bytes);
    cmsCloseProfile(profile);
    return data;
}

inline std::string as_text(const ProfileData& data)
{
    return {data.begin(), data.end()};
}

/// Gives the process its output profile, and takes it away again.
struct OutputProfile {
    explicit OutputProfile(const std::string& path)
    {
        inq_colour_manager()->set_output_profile_path(path.c_str());
    }
    ~OutputProfile() { inq_colour_manager()->set_output_profile_path(""); }
};
