#pragma once

#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/ConnectIStream.h"

#include <string_view>

/// Characters and objects of a whole container in memory. A container that is truncated, damaged,
/// foreign, newer than this library or that names an unknown class puts the stream into its error
/// state before any reader runs.
class CharIStream : public ConnectIStream {
public:
    explicit CharIStream(std::string_view container);

    void clear_buffer() override;
    KIVIStream& get(CharOStream& to, int n) override;
    KIVIStream& get(CharOStream& to) override;
    KIVIStream& get(char& c) override;
    KIVIStream& get(char* to, int n) override;
    long getpos() const override { return static_cast<long>(inq_offset()); }
    void setpos(long offset) override { set_offset(static_cast<std::size_t>(offset)); }

protected:
    CharIStream() = default;

    /// Verifies the container in `buffer` and begins with its first object.
    void open_container();

    ByteBuffer buffer;

private:
    class Container;
};
