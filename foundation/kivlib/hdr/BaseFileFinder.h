#pragma once

#include "kivlib/hdr/KIVString.h"

class KIVFile;

/// An application's service for lost files.
class BaseFileFinder {
public:
    virtual ~BaseFileFinder() = default;

    /// The path to use instead of `file`, which may be the same. `title` says what is looked for.
    /// With `*leave` set, the file stays as it is and the load that asks is given up.
    virtual KIVString find_replacement(const KIVFile& file, const char* title, bool* leave) = 0;

    /// Whether any file was replaced so far.
    virtual bool files_were_replaced() = 0;
};

/// The finder in use, which is taken over; null for none.
void set_file_finder(BaseFileFinder* finder);
BaseFileFinder* inq_file_finder();
void delete_file_finder();
