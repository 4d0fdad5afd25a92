#include "kivlib/hdr/ConnectOStream.h"

#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/UCharArray.h"
#include "kivlib/hdr/stack_left.h"
#include "kivlib/src/StoreTable.h"
#include "kivlib/src/container_format.h"
#include "kivlib/src/object_tags.h"

namespace {
constexpr char TOO_LONG[] = "a record of more than 4 GiB";
constexpr int DEEP = 400; // links below this nesting are announced, and written later

/// Only such an object can be announced: its reader is given the place that waits for it.
bool has_known_size(const KIVObject* object)
{
    const ClassDescriptor* descriptor = object->inq_class_descriptor();
    return descriptor && descriptor->inq_stored_type();
}
} // namespace

ConnectOStream::ConnectOStream()
    : table(std::make_unique<StoreTable>()), required_version(container::FIRST_VERSION)
{}

ConnectOStream::~ConnectOStream() = default;

void KIVOStream::insert_link(const KIVObject* object)
{
    link = Link::FAR;
    insert_with_class_hdr(object);
    link = Link::NONE;
}

void KIVOStream::insert_back_link(const KIVObject* object)
{
    link = Link::BACK;
    insert_with_class_hdr(object);
    link = Link::NONE;
}

bool ConnectOStream::make_room(std::size_t n)
{
    const std::size_t size = inq_size();
    payload.set_size(size);
    if (!payload.make_room(n)) {
        set_error_state(NO_MEMORY);
        return false;
    }
    at = payload.data() + size;
    room_end = payload.data() + payload.capacity();
    return true;
}

void ConnectOStream::put_bytes(const void* from, std::size_t n)
{
    char* to = extend(n);
    if (to && n > 0)
        std::memcpy(to, from, n);
}

KIVOStream& ConnectOStream::operator<<(int value)
{
    put_number<std::int32_t>(value);
    return *this;
}

KIVOStream& ConnectOStream::operator<<(long value)
{
    put_number<std::int64_t>(value);
    return *this;
}

KIVOStream& ConnectOStream::operator<<(double value)
{
    if (!std::isfinite(value))
        set_error_state(BAD_NUMBER);
    put_number(value);
    return *this;
}

KIVOStream& ConnectOStream::operator<<(float value)
{
    if (!std::isfinite(value))
        set_error_state(BAD_NUMBER);
    put_number(value);
    return *this;
}

KIVOStream& ConnectOStream::operator<<(const UCharArray& bytes)
{
    put_number(static_cast<std::uint32_t>(bytes.inq_size()));
    put_bytes(bytes.inq_bytes(), bytes.inq_size());
    return *this;
}

KIVOStream& ConnectOStream::operator<<(const char* text)
{
    return *this << UCharArray(text, text ? std::strlen(text) : 0);
}

void ConnectOStream::insert_without_class_hdr(const KIVObject* object)
{
    const_cast<KIVObject*>(object)->storer(*this);
}

void ConnectOStream::insert_with_class_hdr(const KIVObject* object)
{
    const Link kind = std::exchange(link, Link::NONE);
    const bool may_wait = kind == Link::BACK || (kind == Link::FAR && nesting >= DEEP);
    if (!object) {
        put_number<std::uint16_t>(NULL_OBJECT);
        return;
    }
    if (nesting == 0)
        stack_floor = inq_stack_floor();
    const std::uint32_t number = table->find(object);
    if (number == StoreTable::NONE && may_wait && has_known_size(object))
        put_forward(object);
    else if (number == StoreTable::NONE || !object->reference_from_stream())
        put_new(object);
    else if (kind == Link::NONE && !awaited.empty() && awaited.erase(object) > 0)
        put_arrival(object, number);
    else
        put_seen(number);
    if (nesting == 0)
        put_awaited();
}

void ConnectOStream::put_seen(std::uint32_t number)
{
    put_number<std::uint16_t>(SEEN_OBJECT);
    put_number(number);
}

/// The length is known when the record is there, so its form is a guess by earlier records of the
/// class. A chain of records within one another is long, and would be moved link by link.
void ConnectOStream::put_new(const KIVObject* object)
{
    table->add(object);
    const unsigned class_index = intern(object->inq_class_descriptor());
    if (!can_nest())
        return;
    const std::size_t tag_at = inq_size();
    StoredClass& stored = classes[class_index];
    const auto form =
        stored.open_records > 0 ? LENGTH_32 : static_cast<LengthForm>(stored.length_form);
    ++stored.open_records;
    extend(sizeof(std::uint16_t) + width_of(form));
    ++nesting;
    insert_without_class_hdr(object);
    --nesting;
    --classes[class_index].open_records; // the table may have moved
    end_new(tag_at, class_index, form);
}

void ConnectOStream::end_new(std::size_t tag_at, unsigned class_index, std::uint16_t guess)
{
    auto form = static_cast<LengthForm>(guess);
    const std::size_t length_at = tag_at + sizeof(std::uint16_t);
    const std::size_t length = inq_size() - length_at - width_of(form);
    if (length > UINT32_MAX)
        set_error(CANT_WRITE, TOO_LONG);
    if (inq_error_state() != OKAY)
        return;
    StoredClass& stored = classes[class_index];
    const LengthForm narrowest = narrowest_form(length);
    if (!stored.has_records)
        stored.length_form = narrowest;
    stored.has_records = true;
    if (width_of(narrowest) > width_of(form)) {
        widen_length(length_at, width_of(narrowest) - width_of(form));
        form = narrowest;
        stored.length_form = form;
    }
    if (form != LENGTH_32)
        required_version = std::max(required_version, container::SHORT_LENGTHS);
    const auto tag = static_cast<std::uint16_t>(form | (FIRST_CLASS + class_index));
    std::memcpy(payload.data() + tag_at, &tag, sizeof tag);
    std::memcpy(payload.data() + length_at, &length, width_of(form));
}

/// Moves a record on, so that its length gets `by` bytes more.
void ConnectOStream::widen_length(std::size_t length_at, std::size_t by)
{
    const std::size_t moved = inq_size() - length_at;
    if (extend(by))
        std::memmove(payload.data() + length_at + by, payload.data() + length_at, moved);
}

void ConnectOStream::put_forward(const KIVObject* object)
{
    table->add(object);
    awaited.insert(object);
    forwards.push_back(object);
    put_number<std::uint16_t>(FORWARD_OBJECT);
    put_number(static_cast<std::uint16_t>(intern(object->inq_class_descriptor())));
}

void ConnectOStream::put_arrival(const KIVObject* object, std::uint32_t number)
{
    put_number<std::uint16_t>(ARRIVING_OBJECT);
    put_number(number);
    put_number(static_cast<std::uint16_t>(intern(object->inq_class_descriptor())));
    if (!can_nest())
        return;
    const std::size_t start = begin_length();
    insert_without_class_hdr(object);
    end_record(start);
}

/// What was announced and is written nowhere else; each record may announce more.
void ConnectOStream::put_awaited()
{
    while (!forwards.empty()) {
        const KIVObject* object = forwards.front();
        forwards.pop_front();
        if (awaited.erase(object) > 0)
            put_arrival(object, table->find(object));
    }
}

bool ConnectOStream::can_nest()
{
    if (is_stack_below(stack_floor))
        set_error_state(TOO_DEEP);
    return inq_error_state() == OKAY;
}

std::size_t ConnectOStream::begin_length()
{
    put_number<std::uint32_t>(0);
    ++nesting;
    return inq_size();
}

void ConnectOStream::end_record(std::size_t start)
{
    --nesting;
    const std::size_t length = inq_size() - start;
    if (length > UINT32_MAX)
        set_error(CANT_WRITE, TOO_LONG);
    if (inq_error_state() != OKAY)
        return;
    const auto stored_length = static_cast<std::uint32_t>(length);
    std::memcpy(payload.data() + start - sizeof stored_length, &stored_length,
                sizeof stored_length);
}

std::size_t ConnectOStream::begin_record(const KIVString& class_name, int version)
{
    table->skip();
    put_number<std::uint16_t>(
        static_cast<std::uint16_t>(FIRST_CLASS + intern(class_name, version)));
    return begin_length();
}

unsigned ConnectOStream::intern(const ClassDescriptor* descriptor)
{
    if (descriptor && descriptor->table_epoch == table->inq_epoch())
        return descriptor->table_index;
    if (!descriptor || !descriptor->inq_reader()) {
        set_error(CANT_WRITE, "an object of a class that can't be read");
        return 0;
    }
    const auto [place, is_new] = class_indices.try_emplace(descriptor, 0U);
    if (is_new)
        place->second = intern(descriptor->inq_name(), descriptor->inq_stored_version());
    descriptor->table_epoch = table->inq_epoch();
    descriptor->table_index = place->second;
    return place->second;
}

unsigned ConnectOStream::intern(const KIVString& name, int version)
{
    const auto found = std::ranges::find_if(classes, [&](const StoredClass& stored) {
        return stored.version == version && stored.name == name;
    });
    if (found != classes.end())
        return static_cast<unsigned>(found - classes.begin());
    if (classes.size() >= container::MOST_CLASSES)
        set_error(CANT_WRITE, "too many classes");
    else
        classes.push_back({name, version});
    return static_cast<unsigned>(classes.size() - 1);
}
