#include "kivlib/hdr/CharOStream.h"

#include "kivlib/hdr/CharIStream.h"
#include "kivlib/src/container_format.h"

namespace {
template <class T> void append(std::string& bytes, T value)
{
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}
} // namespace

KIVOStream& CharOStream::put(CharIStream& from, int n)
{
    std::string bytes(static_cast<std::size_t>(std::clamp(n, 0, from.num_chars_in_buffer())), '\0');
    from.get(bytes.data(), static_cast<int>(bytes.size()));
    put_bytes(bytes.data(), bytes.size());
    return *this;
}

KIVOStream& CharOStream::put(CharIStream& from)
{
    return put(from, from.num_chars_in_buffer());
}

KIVOStream& CharOStream::put(char c)
{
    put_bytes(&c, 1);
    return *this;
}

KIVOStream& CharOStream::put(const char* from, int n)
{
    put_bytes(from, static_cast<std::size_t>(std::max(n, 0)));
    return *this;
}

std::string CharOStream::inq_head() const
{
    std::string table;
    for (const StoredClass& stored : inq_classes()) {
        append(table, static_cast<std::int32_t>(stored.version));
        append(table, static_cast<std::uint32_t>(stored.name.length()));
        table += stored.name.str();
    }
    container::Header header{};
    std::ranges::copy(container::MAGIC, header.magic);
    header.version = static_cast<std::uint32_t>(inq_sys_vsn_required_for_restore());
    header.class_count = static_cast<std::uint32_t>(inq_classes().size());
    header.class_table_size = table.size();
    header.objects_size = inq_payload().size();

    std::string head;
    append(head, header);
    return head + table;
}

std::string CharOStream::inq_tail(const std::string& head, Checksum& checksum) const
{
    checksum.add(head.data(), head.size());
    checksum.add(inq_payload().data(), inq_payload().size());
    std::string tail;
    append(tail, checksum.get());
    checksum.add(tail.data(), tail.size());
    return tail;
}

std::string CharOStream::inq_container() const
{
    std::string bytes = inq_head();
    Checksum checksum;
    const std::string tail = inq_tail(bytes, checksum);
    return bytes.append(inq_payload().data(), inq_payload().size()) + tail;
}
