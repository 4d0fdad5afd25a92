#include "kivlib/hdr/CharIStream.h"

#include "kivlib/hdr/CharOStream.h"
#include "kivlib/hdr/Checksum.h"
#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/src/container_format.h"

#include <optional>

/// The outer form, taken apart. Nothing in it is believed before the checksum fits.
class CharIStream::Container {
public:
    explicit Container(std::string_view bytes) : bytes(bytes)
    {
        if (bytes.size() >= sizeof header)
            std::memcpy(&header, bytes.data(), sizeof header);
    }

    int find_error() const
    {
        if (bytes.size() < sizeof header || !std::ranges::equal(header.magic, container::MAGIC))
            return FOREIGN_FILE;
        if (header.version > container::VERSION)
            return NEWER_CONTAINER;
        return fits_checksum() ? OKAY : BAD_CHECKSUM;
    }

    std::uint32_t inq_version() const { return header.version; }
    std::uint32_t inq_class_count() const { return header.class_count; }
    std::string_view inq_class_table() const
    {
        return bytes.substr(sizeof header, header.class_table_size);
    }
    std::string_view inq_objects() const
    {
        return bytes.substr(sizeof header + header.class_table_size, header.objects_size);
    }

private:
    bool fits_checksum() const
    {
        Checksum::Value stored = 0;
        if (bytes.size() < sizeof header + sizeof stored)
            return false;
        const std::size_t rest = bytes.size() - sizeof header - sizeof stored;
        if (header.class_table_size > rest || header.objects_size != rest - header.class_table_size)
            return false;
        std::memcpy(&stored, bytes.data() + bytes.size() - sizeof stored, sizeof stored);
        Checksum checksum;
        checksum.add(bytes.data(), bytes.size() - sizeof stored);
        return checksum.get() == stored;
    }

    std::string_view bytes;
    container::Header header{};
};

namespace {
struct ClassEntry {
    int version;
    std::string_view name;
};

/// The next entry of a class table, which shrinks by it.
std::optional<ClassEntry> take_class(std::string_view& table)
{
    std::int32_t version = 0;
    std::uint32_t length = 0;
    constexpr std::size_t FIXED = sizeof version + sizeof length;
    if (table.size() < FIXED)
        return {};
    std::memcpy(&version, table.data(), sizeof version);
    std::memcpy(&length, table.data() + sizeof version, sizeof length);
    table.remove_prefix(FIXED);
    if (table.size() < length)
        return {};
    const ClassEntry entry{version, table.substr(0, length)};
    table.remove_prefix(length);
    return entry;
}

void add_name(KIVString& names, const ClassEntry& entry, const KIVString& fault)
{
    if (!names.is_null())
        names += ", ";
    names += std::string(entry.name) + " of version " + std::to_string(entry.version);
    if (!fault.is_null())
        names += " (" + fault + ")";
}
} // namespace

CharIStream::CharIStream(std::string_view container)
{
    buffer.append(container.data(), container.size());
    open_container();
}

void CharIStream::open_container()
{
    const Container container({buffer.data(), buffer.size()});
    if (buffer.has_failed())
        set_error_state(NO_MEMORY);
    if (const int outer_error = container.find_error())
        set_error(outer_error,
                  outer_error == NEWER_CONTAINER
                      ? "form " + KIVString(static_cast<int>(container.inq_version()), 0)
                      : KIVString());
    if (inq_error_state() != OKAY)
        return;

    KIVString unreadable;
    int error = OKAY; // NEWER_CLASS tells of the release that knows all of them
    std::string_view table = container.inq_class_table();
    for (std::uint32_t left = container.inq_class_count(); left > 0; --left) {
        const std::optional<ClassEntry> entry = take_class(table);
        if (!entry) {
            set_error_state(BAD_HEADER);
            return;
        }
        KIVString fault;
        if (const int class_error = add_class(entry->name, entry->version, fault)) {
            error = error == NEWER_CLASS ? error : class_error;
            add_name(unreadable, *entry, fault);
        }
    }
    if (error != OKAY)
        set_error(error, unreadable);
    set_bytes(container.inq_objects(), container.inq_version() >= container::SHORT_LENGTHS);
}

void CharIStream::clear_buffer()
{
    take(static_cast<std::size_t>(num_chars_in_buffer()));
}

KIVIStream& CharIStream::get(CharOStream& to, int n)
{
    to.put(*this, n);
    return *this;
}

KIVIStream& CharIStream::get(CharOStream& to)
{
    return get(to, num_chars_in_buffer());
}

KIVIStream& CharIStream::get(char& c)
{
    const char* at = take(1);
    c = at ? *at : '\0';
    return *this;
}

KIVIStream& CharIStream::get(char* to, int n)
{
    const auto size = static_cast<std::size_t>(std::max(n, 0));
    if (const char* at = take(size))
        std::memcpy(to, at, size);
    else
        std::memset(to, 0, size);
    return *this;
}
