#pragma once

#include "imagelib/hdr/ColourManager.h"
#include "imagelib/src/ColourProfile.h"

class MatrixColours;

/// The way from one profile to another, by the colours themselves: white becomes white, black
/// becomes black, and what lies between keeps its place. Pictures that no code of would change are
/// left alone.
class ProfileTransform : public ColourTransform {
public:
    using Profile = std::shared_ptr<const ColourProfile>;

    /// Null, with a reason for the user, where the profiles give no way between colours.
    static std::unique_ptr<ProfileTransform> make(const Profile& from, const Profile& to,
                                                  KIVString& reason);
    ~ProfileTransform() override;
    ProfileTransform(const ProfileTransform&) = delete;
    ProfileTransform& operator=(const ProfileTransform&) = delete;

    void transform(KIVColour& colour) const override;
    bool transform(KIVPixmap& picture) override;

private:
    ProfileTransform(const Profile& from, const Profile& to);

    bool prepare(int bits);
    cmsHTRANSFORM make_way(cmsUInt32Number format, cmsUInt32Number flags) const;
    double inq_move(const double* colour) const;
    double inq_longest_move() const;
    void choose_matrix();

    template <class Sample> void transform_rows(KIVPixmap& picture) const;
    template <class Sample> void transform_row(Sample* row, int pixels) const;
    template <class Sample> void transform_edge(Sample* pixels, int count) const;

    const Profile from;
    const Profile to;
    cmsHTRANSFORM exact = nullptr;  // owned; of single colours, null if nothing is to be done
    cmsHTRANSFORM way_8 = nullptr;  // owned; of whole pixels, made when it is needed
    cmsHTRANSFORM way_16 = nullptr; // owned
    double longest_move = 0.0;      // of a colour
    std::unique_ptr<MatrixColours> matrix; // does what the ways do; null for some profiles
};
