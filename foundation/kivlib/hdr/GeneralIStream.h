#pragma once

#include "kivlib/hdr/CharIStream.h"

/// Reads a file of objects, whole, at construction.
class GeneralIStream : public CharIStream {
public:
    explicit GeneralIStream(const char* path);

    KIVString inq_file_name() const override { return path; }

private:
    void read_file();

    KIVString path;
};
