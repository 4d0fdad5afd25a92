#include "kivlib/hdr/ConnectIStream.h"

#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/ModuleFolder.h"
#include "kivlib/hdr/UCharArray.h"
#include "kivlib/hdr/stack_left.h"
#include "kivlib/src/LoadTable.h"
#include "kivlib/src/object_tags.h"

#include <limits>

static_assert(std::endian::native == std::endian::little, "numbers stand in files as in memory");

namespace {
/// By true bases where both classes told them, else by the names of their records.
bool is_class_of(const ClassDescriptor& actual, const ClassDescriptor& wanted)
{
    const StoredType* type = actual.inq_stored_type();
    const StoredType* wanted_type = wanted.inq_stored_type();
    return &actual == &wanted || (type && wanted_type ? type->is_a(*wanted_type)
                                                      : actual.is_subclass_of(wanted.inq_name()));
}
} // namespace

void ConnectIStream::set_bytes(std::string_view objects, bool has_short_lengths)
{
    bytes = at = objects.data();
    record_end = at + objects.size();
    length_forms = has_short_lengths ? LENGTH_FORMS : 0;
}

/// In an error nothing is left to read.
void ConnectIStream::set_error_state(int state)
{
    KIVIStream::set_error_state(state);
    if (!is_okay())
        record_end = at;
}

const char* ConnectIStream::take_too_much()
{
    set_error_state(ENDED);
    return nullptr;
}

void ConnectIStream::set_offset(std::size_t offset)
{
    if (offset > static_cast<std::size_t>(record_end - bytes))
        set_error_state(ENDED);
    else if (is_okay())
        at = bytes + offset;
}

int ConnectIStream::num_chars_in_buffer() const
{
    constexpr std::size_t MOST = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(inq_bytes_at_hand(), MOST));
}

template <class T> T ConnectIStream::get_number()
{
    T value{};
    if (const char* from = take(sizeof value))
        std::memcpy(&value, from, sizeof value);
    return value;
}

KIVIStream& ConnectIStream::operator>>(int& value)
{
    value = get_number<std::int32_t>();
    return *this;
}

KIVIStream& ConnectIStream::operator>>(long& value)
{
    value = get_number<std::int64_t>();
    return *this;
}

KIVIStream& ConnectIStream::operator>>(double& value)
{
    value = get_number<double>();
    if (!std::isfinite(value)) {
        set_error_state(BAD_NUMBER);
        value = 0.0;
    }
    return *this;
}

KIVIStream& ConnectIStream::operator>>(float& value)
{
    value = get_number<float>();
    if (!std::isfinite(value)) {
        set_error_state(BAD_NUMBER);
        value = 0.0F;
    }
    return *this;
}

KIVIStream& ConnectIStream::operator>>(WritableUCharArray& array)
{
    const auto size = get_number<std::uint32_t>();
    const char* from = take(size);
    array.assign(from, from ? size : 0);
    return *this;
}

KIVIStream& ConnectIStream::operator>>(char* text)
{
    const auto size = get_number<std::uint32_t>();
    const char* from = take(size);
    const std::size_t kept =
        from ? std::min<std::size_t>(size, std::size_t(std::max(text_width, 1)) - 1) : 0;
    if (kept)
        std::memcpy(text, from, kept);
    text[kept] = '\0';
    return *this;
}

int ConnectIStream::add_class(const KIVString& name, int stored_version, KIVString& fault)
{
    const ClassManager* manager = ClassManager::inq_main();
    ClassDescriptor* descriptor = manager->find_cd_for(name);
    const bool has_code = descriptor && !descriptor->inq_is_from_stream();
    if (!has_code && ModuleFolder::load_class(name, fault))
        descriptor = manager->find_cd_for(name);
    classes.push_back({name, descriptor, stored_version});
    if (!descriptor || !descriptor->inq_reader())
        return UNKNOWN_CLASS;
    return stored_version > descriptor->inq_stored_version() ? NEWER_CLASS : OKAY;
}

void ConnectIStream::add_to_load_table(KIVObject* object)
{
    table->enter(object);
}

const ConnectIStream::StoredClass* ConnectIStream::get_class(unsigned index)
{
    if (index < classes.size() && classes[index].descriptor)
        return &classes[index];
    set_error_state(BAD_HEADER);
    return nullptr;
}

bool ConnectIStream::find_to_be(const StoredClass& stored, const ClassDescriptor* expected)
{
    if (is_class_of(*stored.descriptor, *expected)) {
        stored.found_to_be = expected;
        return true;
    }
    set_error(WRONG_CLASS, "expected " + expected->inq_name());
    return false;
}

KIVObject* ConnectIStream::read_object(ClassDescriptor* expected)
{
    if (nesting > 0)
        return read_next(expected);
    stack_floor = inq_stack_floor();
    KIVObject* object = read_next(expected);
    if (is_okay())
        table->keep();
    return object;
}

KIVObject* ConnectIStream::read_next(const ClassDescriptor* expected)
{
    const auto tag = get_number<std::uint16_t>();
    if (!is_okay())
        return nullptr;
    switch (tag) {
    case NULL_OBJECT:
        return nullptr;
    case SEEN_OBJECT:
        return read_seen(expected);
    case FORWARD_OBJECT:
        return read_forward(expected);
    case ARRIVING_OBJECT:
        return read_arrival();
    default:
        return read_new(tag, expected);
    }
}

KIVObject* ConnectIStream::read_seen(const ClassDescriptor* expected)
{
    const LoadTable::Entry* entry = table->find(get_number<std::uint32_t>());
    if (!entry || !entry->object) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    return is_expected(classes[entry->class_index], expected) ? entry->object : nullptr;
}

KIVObject* ConnectIStream::read_forward(const ClassDescriptor* expected)
{
    const auto class_index = get_number<std::uint16_t>();
    const StoredClass* stored = get_class(class_index);
    if (!stored)
        return nullptr;
    const StoredType* type = stored->descriptor->inq_stored_type();
    if (!type || nesting == 0) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    KIVObject* place = nullptr;
    if (!table->add_awaited(class_index, type->size, place))
        set_error_state(NO_MEMORY);
    return is_expected(*stored, expected) ? place : nullptr;
}

/// The record of an object whose place others hold already.
KIVObject* ConnectIStream::read_arrival()
{
    const auto number = get_number<std::uint32_t>();
    const StoredClass* stored = get_class(get_number<std::uint16_t>());
    const LoadTable::Entry* entry = table->find(number);
    if (!stored || !entry || !entry->is_awaited ||
        classes[entry->class_index].descriptor != stored->descriptor) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    return read_record(*stored, number, get_number<std::uint32_t>());
}

std::size_t ConnectIStream::read_length(unsigned form)
{
    switch (form) {
    case LENGTH_32:
        return get_number<std::uint32_t>();
    case LENGTH_16:
        return get_number<std::uint16_t>();
    case LENGTH_8:
        return get_number<std::uint8_t>();
    default:
        set_error_state(BAD_HEADER);
        return 0;
    }
}

KIVObject* ConnectIStream::read_new(std::uint16_t tag, const ClassDescriptor* expected)
{
    const unsigned class_index = static_cast<unsigned>(tag & ~length_forms) - FIRST_CLASS;
    const StoredClass* stored = get_class(class_index);
    if (!stored || !is_expected(*stored, expected))
        return nullptr;
    const std::size_t length = read_length(tag & length_forms);
    KIVObject* object =
        read_record(*stored, table->add(static_cast<std::uint16_t>(class_index)), length);
    if (nesting > 0)
        return object;
    while (table->inq_awaited_count() > 0 && is_okay())
        if (get_number<std::uint16_t>() == ARRIVING_OBJECT)
            read_arrival();
        else
            set_error_state(BAD_HEADER);
    return is_okay() ? object : nullptr;
}

/// The record of one object: its version holds inside it, and no read passes its end.
class ConnectIStream::RecordScope {
public:
    RecordScope(ConnectIStream& stream, int version, std::size_t length)
        : stream(stream), end(stream.at + length), outer_end(std::exchange(stream.record_end, end)),
          outer_version(std::exchange(stream.version, version))
    {
        ++stream.nesting;
    }
    RecordScope(const RecordScope&) = delete;
    RecordScope& operator=(const RecordScope&) = delete;

    ~RecordScope()
    {
        --stream.nesting;
        stream.version = outer_version;
        if (!stream.is_okay())
            return;
        stream.record_end = outer_end;
        stream.at = end;
    }

private:
    ConnectIStream& stream;
    const char* end;
    const char* outer_end;
    int outer_version;
};

KIVObject* ConnectIStream::read_record(const StoredClass& stored, std::uint32_t number,
                                       std::size_t length)
{
    if (length > inq_bytes_at_hand())
        set_error_state(ENDED);
    if (is_stack_below(stack_floor))
        set_error_state(TOO_DEEP);
    if (number == LoadTable::NONE)
        set_error_state(NO_MEMORY);
    if (!is_okay())
        return nullptr;

    const RecordScope record(*this, stored.version, length);
    table->begin_record(number);
    KIVObject* object = stored.descriptor->inq_reader()(*this);
    table->enter(object); // for a class that does not read KIVObject's part
    table->end_record(number);
    if (!object)
        set_error_state(NO_MEMORY);
    return object;
}
