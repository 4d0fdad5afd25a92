#pragma once

#include "kivlib/hdr/KIVObject.h"
#include "kivlib/hdr/KIVString.h"

/// An error or a status, by two numbers and a text. It is passed by pointer and never thrown.
class KIVError : public KIVObject {
public:
    KIVError(int family, int code) : family(family), code(code) {}

    gsl::owner<KIVObject*> clone() const override { return new KIVError(*this); }
    virtual KIVString inq_description() const { return {}; }

    int inq_family() const { return family; }
    int inq_code() const { return code; }

private:
    int family;
    int code;
};
