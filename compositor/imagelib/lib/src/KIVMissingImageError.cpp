#include "compositor/imagelib/lib/hdr/KIVMissingImageError.h"

namespace {
constexpr int RENDER_ERRORS = 32;
constexpr int MISSING_IMAGE = 401;
} // namespace

KIVMissingImageError::KIVMissingImageError(const KIVString& file)
    : KIVError(RENDER_ERRORS, MISSING_IMAGE), file_name(file)
{}

KIVString KIVMissingImageError::inq_description() const
{
    return "Failed to find image " + file_name;
}

gsl::owner<KIVObject*> KIVMissingImageError::clone() const
{
    return new KIVMissingImageError(*this);
}
