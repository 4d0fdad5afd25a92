#pragma once

#include "kivlib/hdr/KIVStream.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

class CharOStream;
class ClassDescriptor;
class KIVObject;
class LoadTable;
class WritableUCharArray;

/// Reads values and objects. After the first error every read gives zero, an empty text or null
/// and moves nothing, so a reader runs to its end whatever the file holds.
class KIVIStream : public KIVStream {
public:
    KIVIStream();
    ~KIVIStream() override;

    rw_state inq_rw_state() override { return READING; }

    virtual void clear_buffer() = 0;

    /// Bytes left of the record in hand.
    virtual int num_chars_in_buffer() const = 0;
    virtual KIVIStream& get(CharOStream& to, int n) = 0;
    virtual KIVIStream& get(CharOStream& to) = 0;
    virtual KIVIStream& get(char& c) = 0;
    virtual KIVIStream& get(char* to, int n) = 0;

    /// The next object; it may be null, or one that was met before and may still be under
    /// construction. An object that is no `expected` (null: any class) is an error and gives null.
    virtual KIVObject* read_object(ClassDescriptor* expected) = 0;
    virtual KIVIStream& operator>>(WritableUCharArray& bytes) = 0;

    /// A text with its terminator, at most `width()` bytes of it.
    virtual KIVIStream& operator>>(char* text) = 0;
    virtual KIVIStream& operator>>(float& value) = 0;
    virtual KIVIStream& operator>>(double& value) = 0;
    virtual KIVIStream& operator>>(long& value) = 0;
    virtual KIVIStream& operator>>(int& value) = 0;

    /// Called by KIVObject's stream constructor: enters the object whose header was just read. An
    /// embedded value has no header and is not entered.
    virtual void add_to_load_table(KIVObject* object) = 0;

    /// The version of the record in hand.
    virtual int inq_version() const = 0;
    virtual void set_version(int version) = 0;
    virtual int width() const = 0;
    virtual void width(int characters) = 0;

    KIVIStream& operator>>(unsigned long& value);
    KIVIStream& operator>>(unsigned int& value);

    /// Reads a number as it stands in the file, without a virtual call, if it is there and sound.
    /// Otherwise false, and nothing has moved: `>>` tells what is wrong.
    template <class Stored> bool read_at_hand(Stored& value)
    {
        if (inq_bytes_at_hand() < sizeof value)
            return false;
        std::memcpy(&value, at, sizeof value);
        if constexpr (std::is_floating_point_v<Stored>)
            if (!std::isfinite(value))
                return false;
        at += sizeof value;
        return true;
    }

    /// True if `object`, read from this stream, had no owner yet: it has one now. Otherwise false,
    /// and an error. Whoever takes an object over claims it; in the end a stream that is in error
    /// deletes what nobody claimed.
    bool claim(const KIVObject* object);

    /// Takes over what was read and nobody has claimed, since nothing but links leads to it. It is
    /// called when all is read; a stream that is in error gives nothing.
    std::vector<std::unique_ptr<KIVObject>> claim_rest();

    /// `object`, read from this stream, is about to go: a record that refers to it is an error.
    void forget(const KIVObject* object);

    /// A count of things of at least `least` bytes each. More than the record can hold is an
    /// error and gives 0.
    int read_count(std::size_t least = 1);

    /// Memory for the object whose header was just read; null if there is none.
    void* storage_for_object(std::size_t size);

    /// Nothing came to be there.
    void forget_storage(const void* memory);

protected:
    std::size_t inq_bytes_at_hand() const { return static_cast<std::size_t>(record_end - at); }

    // What is left of the record in hand; nothing in a stream that is in error.
    const char* at = nullptr;
    const char* record_end = nullptr;
    std::unique_ptr<LoadTable> table;
};
