#include "kivlib/hdr/ConnectIStream.h"

#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/UCharArray.h"
#include "kivlib/hdr/stack_left.h"
#include "kivlib/src/LoadTable.h"
#include "kivlib/src/module_folder.h"
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

void ConnectIStream::set_bytes(const char* from, std::size_t size)
{
    bytes = from;
    pos = 0;
    record_end = size;
}

const char* ConnectIStream::take(std::size_t n)
{
    if (inq_error_state() != OKAY)
        return nullptr;
    if (record_end - pos < n) {
        set_error_state(ENDED);
        return nullptr;
    }
    const char* at = bytes + pos;
    pos += n;
    return at;
}

void ConnectIStream::set_offset(std::size_t offset)
{
    if (offset <= record_end)
        pos = offset;
    else
        set_error_state(ENDED);
}

int ConnectIStream::num_chars_in_buffer() const
{
    if (inq_error_state() != OKAY)
        return 0;
    constexpr std::size_t MOST = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(record_end - pos, MOST));
}

template <class T> T ConnectIStream::get_number()
{
    T value{};
    if (const char* at = take(sizeof value))
        std::memcpy(&value, at, sizeof value);
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
    const char* at = take(size);
    array.assign(at, at ? size : 0);
    return *this;
}

KIVIStream& ConnectIStream::operator>>(char* text)
{
    const auto size = get_number<std::uint32_t>();
    const char* at = take(size);
    const std::size_t kept =
        at ? std::min<std::size_t>(size, std::size_t(std::max(text_width, 1)) - 1) : 0;
    if (kept)
        std::memcpy(text, at, kept);
    text[kept] = '\0';
    return *this;
}

int ConnectIStream::add_class(const KIVString& name, int stored_version)
{
    const ClassManager* manager = ClassManager::inq_main();
    ClassDescriptor* descriptor = manager->find_cd_for(name);
    if ((!descriptor || !descriptor->inq_reader()) && load_module_of_class(name))
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

bool ConnectIStream::is_expected(const ClassDescriptor* actual, const ClassDescriptor* expected)
{
    if (!expected || is_class_of(*actual, *expected))
        return true;
    set_error(WRONG_CLASS, "expected " + expected->inq_name());
    return false;
}

KIVObject* ConnectIStream::read_object(ClassDescriptor* expected)
{
    KIVObject* object = read_next(expected);
    if (nesting == 0 && inq_error_state() == OKAY)
        table->keep();
    return object;
}

KIVObject* ConnectIStream::read_next(const ClassDescriptor* expected)
{
    const auto tag = get_number<std::uint16_t>();
    if (inq_error_state() != OKAY)
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
        return read_new(tag - FIRST_CLASS, expected);
    }
}

KIVObject* ConnectIStream::read_seen(const ClassDescriptor* expected)
{
    const LoadTable::Entry* entry = table->find(get_number<std::uint32_t>());
    if (!entry || !entry->object) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    return is_expected(entry->descriptor, expected) ? entry->object : nullptr;
}

KIVObject* ConnectIStream::read_forward(const ClassDescriptor* expected)
{
    const StoredClass* stored = get_class(get_number<std::uint16_t>());
    if (!stored)
        return nullptr;
    if (!stored->descriptor->inq_stored_type() || nesting == 0) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    KIVObject* place = nullptr;
    if (!table->add_awaited(stored->descriptor, place))
        set_error_state(NO_MEMORY);
    return is_expected(stored->descriptor, expected) ? place : nullptr;
}

/// The record of an object whose place others hold already.
KIVObject* ConnectIStream::read_arrival()
{
    const auto number = get_number<std::uint32_t>();
    const StoredClass* stored = get_class(get_number<std::uint16_t>());
    const LoadTable::Entry* entry = table->find(number);
    if (!stored || !entry || !entry->is_awaited || entry->descriptor != stored->descriptor) {
        set_error_state(BAD_HEADER);
        return nullptr;
    }
    return read_record(*stored, number);
}

KIVObject* ConnectIStream::read_new(unsigned class_index, const ClassDescriptor* expected)
{
    const StoredClass* stored = get_class(class_index);
    if (!stored || !is_expected(stored->descriptor, expected))
        return nullptr;
    KIVObject* object = read_record(*stored, table->add(stored->descriptor));
    while (nesting == 0 && table->inq_awaited_count() > 0 && inq_error_state() == OKAY)
        if (get_number<std::uint16_t>() == ARRIVING_OBJECT)
            read_arrival();
        else
            set_error_state(BAD_HEADER);
    return nesting == 0 && inq_error_state() != OKAY ? nullptr : object;
}

/// The record of one object: its version holds inside it, and no read passes its end.
class ConnectIStream::RecordScope {
public:
    RecordScope(ConnectIStream& stream, int version, std::size_t length)
        : stream(stream), end(stream.pos + length),
          outer_end(std::exchange(stream.record_end, end)),
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
        stream.record_end = outer_end;
        if (stream.inq_error_state() == OKAY)
            stream.pos = end;
    }

private:
    ConnectIStream& stream;
    std::size_t end, outer_end;
    int outer_version;
};

KIVObject* ConnectIStream::read_record(const StoredClass& stored, std::uint32_t number)
{
    const auto length = get_number<std::uint32_t>();
    if (inq_error_state() == OKAY && length > record_end - pos)
        set_error_state(ENDED);
    if (is_stack_low())
        set_error_state(TOO_DEEP);
    if (inq_error_state() != OKAY)
        return nullptr;

    const RecordScope record(*this, stored.version, length);
    table->expect(number);
    table->set_open(number, true);
    KIVObject* object = stored.descriptor->inq_reader()(*this);
    table->enter(object); // for a class that does not read KIVObject's part
    table->set_open(number, false);
    if (!object)
        set_error_state(NO_MEMORY);
    return object;
}
