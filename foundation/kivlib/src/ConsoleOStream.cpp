#include "kivlib/hdr/ConsoleOStream.h"

#include "kivlib/hdr/CharIStream.h"
#include "kivlib/hdr/UCharArray.h"

namespace {
ConsoleOStream the_output(stdout);
ConsoleOStream the_errors(stderr);
} // namespace

KIVOStream* coutp = &the_output;
KIVOStream* cerrp = &the_errors;

KIVOStream& TextOStream::put(CharIStream& from, int n)
{
    char c = 0;
    for (; n > 0 && from.num_chars_in_buffer() > 0; --n) {
        from.get(c);
        put(c);
    }
    return *this;
}

KIVOStream& TextOStream::put(CharIStream& from)
{
    return put(from, from.num_chars_in_buffer());
}

KIVOStream& TextOStream::put(char c)
{
    write_text(&c, 1);
    return *this;
}

KIVOStream& TextOStream::put(const char* from, int n)
{
    write_text(from, static_cast<std::size_t>(std::max(n, 0)));
    return *this;
}

void TextOStream::insert_without_class_hdr(const KIVObject* object)
{
    object->dump_on(*this);
}

void TextOStream::insert_with_class_hdr(const KIVObject* object)
{
    if (object)
        object->dump_on(*this);
    else
        *this << "null";
}

KIVOStream& TextOStream::operator<<(const UCharArray& bytes)
{
    write_text(reinterpret_cast<const char*>(bytes.inq_bytes()), bytes.inq_size());
    return *this;
}

KIVOStream& TextOStream::operator<<(const char* text)
{
    if (text)
        write_text(text, std::strlen(text));
    return *this;
}

KIVOStream& TextOStream::operator<<(float value)
{
    return *this << static_cast<double>(value);
}

KIVOStream& TextOStream::operator<<(double value)
{
    return *this << KIVString(value);
}

KIVOStream& TextOStream::operator<<(long value)
{
    return *this << std::to_string(value).c_str();
}

KIVOStream& TextOStream::operator<<(int value)
{
    return *this << std::to_string(value).c_str();
}
