#pragma once

#include "kivlib/hdr/FormatVersions.h"
#include "kivlib/hdr/KIVIStream.h"
#include "kivlib/hdr/KIVOStream.h"

#include <memory>
#include <type_traits>

// A record told once. A class lists its fields in one template member `record`, which its stream
// constructor runs with a RecordReader and its `storer` with a RecordWriter, so the two orders
// cannot part. bool and enumerations stand in the file as int.

namespace stored_number {
template <class T>
constexpr bool stands_as_int = std::is_same_v<T, bool> || std::is_enum_v<T> ||
                               std::is_same_v<T, int> || std::is_same_v<T, unsigned>;
template <class T>
constexpr bool stands_as_long = std::is_same_v<T, long> || std::is_same_v<T, unsigned long>;
template <class T>
constexpr bool stands_as_number =
    stands_as_int<T> || stands_as_long<T> || std::is_same_v<T, float> || std::is_same_v<T, double>;

/// The type of a number in the file.
template <class T>
using Form =
    std::conditional_t<stands_as_int<T>, int, std::conditional_t<stands_as_long<T>, long, T>>;
static_assert(sizeof(int) == 4 && sizeof(long) == 8);
} // namespace stored_number

class RecordReader {
public:
    explicit RecordReader(KIVIStream& stream) : stream(stream) {}

    template <class T> void value(T& field, FormatVersions in = always(), const T& otherwise = T())
    {
        if (is_absent(in))
            field = otherwise;
        else if constexpr (stored_number::stands_as_number<T>)
            read_number(field, otherwise);
        else if (stream.inq_error_state())
            field = otherwise;
        else
            stream >> field;
    }

    /// A number that stands in the file as another type than in memory.
    template <class Stored, class T> void value_as(T& field)
    {
        Stored stored{};
        value(stored);
        field = static_cast<T>(stored);
    }

    /// A value object without class header.
    template <class T>
    void embedded(T& field, FormatVersions in = always(), const T& otherwise = T())
    {
        if (is_absent(in))
            field = otherwise;
        else
            field = T(stream);
    }

    /// A value object with class header. A null leaves the default value.
    template <class T> void headed(T& field, FormatVersions in = always())
    {
        std::unique_ptr<T> object;
        owned(object, in);
        field = object ? *object : T();
        stream.forget(object.get());
    }

    /// An object with class header that this record owns.
    template <class T> void owned(std::unique_ptr<T>& field, FormatVersions in = always())
    {
        T* object = is_absent(in) ? nullptr : T::read_from(stream);
        field.reset(object && stream.claim(object) ? object : nullptr);
    }

    /// An object with class header that somebody else owns.
    template <class T> void link(T*& field, FormatVersions in = always())
    {
        field = is_absent(in) ? nullptr : T::read_from(stream);
    }

    /// The same where chains of such links may be as long as the scene is large. What the field
    /// points at may not even be under construction yet.
    template <class T> void far_link(T*& field, FormatVersions in = always()) { link(field, in); }

    /// The same for a link to the owner of this object, which may be met first through this link.
    template <class T> void back_link(T*& field) { link(field); }

    /// Fields that stood in old files and have no use today.
    void dropped_int(FormatVersions in)
    {
        int dropped = 0;
        value(dropped, in);
    }
    template <class T> void dropped_link(FormatVersions in)
    {
        T* dropped = nullptr;
        link(dropped, in);
    }
    template <class T> void dropped_owned(FormatVersions in)
    {
        std::unique_ptr<T> dropped;
        owned(dropped, in);
        stream.forget(dropped.get());
    }

private:
    bool is_absent(FormatVersions in) const
    {
        return !in.hold_all() && !in.hold(stream.inq_version());
    }

    template <class T> void read_number(T& field, const T& otherwise)
    {
        stored_number::Form<T> number{};
        if (!stream.read_at_hand(number)) {
            if (stream.inq_error_state()) {
                field = otherwise;
                return;
            }
            stream >> number;
        }
        if constexpr (std::is_same_v<T, bool>)
            field = number != 0;
        else
            field = static_cast<T>(number);
    }

    KIVIStream& stream;
};

/// Writes the newest form: a field of old files alone is passed over.
class RecordWriter {
public:
    explicit RecordWriter(KIVOStream& stream) : stream(stream) {}

    template <class T> void value(const T& field, FormatVersions in = always(), const T& = T())
    {
        if (!in.hold_today())
            return;
        if constexpr (stored_number::stands_as_number<T>)
            stream.write_number(static_cast<stored_number::Form<T>>(field));
        else
            stream << field;
    }

    template <class Stored, class T> void value_as(const T& field)
    {
        value(static_cast<Stored>(field));
    }

    template <class T> void embedded(const T& field, FormatVersions in = always(), const T& = T())
    {
        if (in.hold_today())
            stream.insert_without_class_hdr(&field);
    }

    template <class T> void headed(const T& field, FormatVersions in = always())
    {
        if (in.hold_today())
            stream.insert_with_class_hdr(&field);
    }

    template <class T> void owned(const std::unique_ptr<T>& field, FormatVersions in = always())
    {
        if (in.hold_today())
            stream.insert_with_class_hdr(field.get());
    }

    template <class T> void link(T* field, FormatVersions in = always())
    {
        if (in.hold_today())
            stream.insert_with_class_hdr(field);
    }

    template <class T> void far_link(T* field, FormatVersions in = always())
    {
        if (in.hold_today())
            stream.insert_link(field);
    }
    template <class T> void back_link(T* field) { stream.insert_back_link(field); }

    void dropped_int(FormatVersions) {}
    template <class T> void dropped_link(FormatVersions) {}
    template <class T> void dropped_owned(FormatVersions) {}

private:
    KIVOStream& stream;
};

/// The stream constructor and the storer of a class that does no more than run its `record`.
#define KIV_STORED_RECORD(Class)                                                                   \
    Class::Class(KIVIStream& stream) : Base(stream)                                                \
    {                                                                                              \
        RecordReader reader_of_fields(stream);                                                     \
        record(reader_of_fields);                                                                  \
    }                                                                                              \
    void Class::storer(KIVOStream& stream)                                                         \
    {                                                                                              \
        Base::storer(stream);                                                                      \
        RecordWriter writer_of_fields(stream);                                                     \
        record(writer_of_fields);                                                                  \
    }                                                                                              \
    static_assert(true)
