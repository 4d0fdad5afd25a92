#pragma once

#include "kivlib/hdr/ByteBuffer.h"

#include <memory>

/// Memory for the contents of a file, and inside of its life for what they are made from. That of
/// the last one is taken again, since fresh pages cost more than copying a frame into them.
class FileContents {
public:
    FileContents();
    FileContents(const FileContents&) = delete;
    FileContents& operator=(const FileContents&) = delete;
    ~FileContents();

    ByteBuffer& operator*() { return *buffer; }

private:
    std::unique_ptr<ByteBuffer> buffer;
};
