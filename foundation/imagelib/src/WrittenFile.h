#pragma once

#include "imagelib/src/PictureReader.h"
#include "kivlib/hdr/FileHandle.h"

struct PictureForm;

/// A file that may hold a frame already.
class WrittenFile {
public:
    explicit WrittenFile(const KIVString& path);

    /// 0 for what is no file.
    std::size_t inq_size() const { return size; }
    const FileHandle& inq_handle() const { return handle; }

    /// Whether these bytes stand at a place.
    bool has(std::size_t place, Bytes bytes) const;

    /// Whether all of it can be read as a picture of the size.
    bool can_be_read(const PictureForm& form) const;

private:
    const KIVString path;
    FileHandle handle;
    std::size_t size = 0;
};
