#pragma once

#include "kivlib/hdr/CharIStream.h"
#include "kivlib/hdr/CharOStream.h"

#include <memory>
#include <string>

/// A record as an old release wrote it: the class, its version then, and the fields one by one.
class OldRecord : public CharOStream {
public:
    OldRecord(const char* class_name, int version) : start(begin_record(class_name, version)) {}

    std::string finish()
    {
        end_record(start);
        return inq_container();
    }

    /// Another object with its header, inside this one.
    template <class Tell> OldRecord& nested(const char* class_name, int version, Tell tell)
    {
        const std::size_t inner = begin_record(class_name, version);
        tell(*this);
        end_record(inner);
        return *this;
    }

    template <class T> std::unique_ptr<T> read()
    {
        CharIStream stream(finish());
        return std::unique_ptr<T>(T::read_from(stream));
    }

private:
    std::size_t start;
};

/// What comes back of an object that is stored and read.
template <class T> std::unique_ptr<T> stored_and_read(const T& object)
{
    CharOStream out;
    out.insert_with_class_hdr(&object);
    CharIStream in(out.inq_container());
    return std::unique_ptr<T>(T::read_from(in));
}
