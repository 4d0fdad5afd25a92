#pragma once

#include "kivlib/hdr/GeneralOStream.h"

/// The binary file output stream of the store.
class BinOStream : public GeneralOStream {
public:
    /// `is_anew` 1: the file starts empty, which is the one way there is. `permissions` -1: those
    /// that the process gives to new files.
    BinOStream(const char* path, int is_anew, int permissions);

    /// On `opened`, a new file, which the caller takes back, syncs and closes.
    BinOStream(const char* path, FileHandle opened);
};
