#pragma once

#include "kivlib/hdr/KIVStream.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>

class CharIStream;
class KIVObject;
class UCharArray;

/// Writes values and objects.
class KIVOStream : public KIVStream {
public:
    rw_state inq_rw_state() override { return WRITING; }

    virtual void close() = 0;
    virtual void flush() = 0;
    virtual KIVOStream& put(CharIStream& from, int n) = 0;
    virtual KIVOStream& put(CharIStream& from) = 0;
    virtual KIVOStream& put(char c) = 0;
    virtual KIVOStream& put(const char* from, int n) = 0;

    /// The lowest container version that a reader of this stream must know.
    virtual int inq_sys_vsn_required_for_restore() const = 0;

    /// Only what the object's `storer` writes: its reader has to know the class.
    virtual void insert_without_class_hdr(const KIVObject* object) = 0;

    /// The object with its class; null, and one that was inserted before, come back as such.
    virtual void insert_with_class_hdr(const KIVObject* object) = 0;
    virtual KIVOStream& operator<<(const UCharArray& bytes) = 0;
    virtual KIVOStream& operator<<(const char* text) = 0;
    virtual KIVOStream& operator<<(float value) = 0;
    virtual KIVOStream& operator<<(double value) = 0;
    virtual KIVOStream& operator<<(long value) = 0;
    virtual KIVOStream& operator<<(int value) = 0;
    virtual void set_sys_vsn_required_for_restore(int version) = 0;

    KIVOStream& operator<<(unsigned long value) { return *this << static_cast<long>(value); }
    KIVOStream& operator<<(unsigned int value) { return *this << static_cast<int>(value); }

    /// As `<<`, without a virtual call where there is room at hand.
    template <class Stored> void write_number(Stored value)
    {
        bool fits = static_cast<std::size_t>(room_end - at) >= sizeof value;
        if constexpr (std::is_floating_point_v<Stored>)
            fits = fits && std::isfinite(value);
        if (!fits) {
            *this << value;
            return;
        }
        std::memcpy(at, &value, sizeof value);
        at += sizeof value;
    }

    /// As `insert_with_class_hdr`, for an object whose reader does not look into it. In deep
    /// nesting its record may follow later in the stream, so a long chain of links needs no stack.
    void insert_link(const KIVObject* object);

    /// The same for a link to the owner of what is written. The owner's record never stands inside
    /// that of what it owns: it follows where it is written itself.
    void insert_back_link(const KIVObject* object);

protected:
    enum class Link { NONE, FAR, BACK };
    Link link = Link::NONE; // what insert_link and insert_back_link insert

    // Room for bytes at the end of what was written; a stream of another kind has none.
    char* at = nullptr;
    char* room_end = nullptr;
};
