#include "tests/support/TestProfile.h"

#include <fstream>

namespace {
void write(const std::string& path, cmsHPROFILE profile)
{
    std::ofstream(path, std::ios::binary) << as_text(take_data(profile));
}
} // namespace

/// Puts swap.icc, grey.icc and lab.icc into a folder.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 1;
    const std::string folder = argv[1];
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1.8);
    write(folder + "/swap.icc", make_swapping_profile());
    write(folder + "/grey.icc", cmsCreateGrayProfile(cmsD50_xyY(), curve));
    write(folder + "/lab.icc", cmsCreateLab4Profile(nullptr));
    cmsFreeToneCurve(curve);
    return 0;
}
