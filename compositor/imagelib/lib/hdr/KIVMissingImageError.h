#pragma once

#include "kivlib/hdr/KIVError.h"

/// An image file that isn't where a scene has it, for programs that report such things.
class KIVMissingImageError : public KIVError {
public:
    explicit KIVMissingImageError(const KIVString& file);

    KIVString inq_description() const override;
    gsl::owner<KIVObject*> clone() const override;

private:
    KIVString file_name;
};
