#pragma once

#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/ConnectOStream.h"

#include <string>

/// Characters and objects of one container, gathered in memory.
class CharOStream : public ConnectOStream {
public:
    void close() override {}
    void flush() override {}
    KIVOStream& put(CharIStream& from, int n) override;
    KIVOStream& put(CharIStream& from) override;
    KIVOStream& put(char c) override;
    KIVOStream& put(const char* from, int n) override;
    long getpos() const override { return static_cast<long>(inq_payload().size()); }

    /// The whole container as it stands: header, class table, objects, checksum.
    std::string inq_container() const;

protected:
    /// Header and class table, and the checksum over them and the objects. `checksum`, which is
    /// new, is that of the whole container afterwards.
    std::string inq_head() const;
    std::string inq_tail(const std::string& head, Checksum& checksum) const;
};
