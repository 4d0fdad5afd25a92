#include "kivlib/hdr/KIVString.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/StoredClass.h"
#include "kivlib/hdr/UCharArray.h"

#include <cstdio>
#include <filesystem>

namespace {
KIVObject* read_string(KIVIStream& stream)
{
    return new (stream) KIVString(stream);
}

ClassDescriptor*& string_descriptor()
{
    static ClassDescriptor* descriptor = [] {
        auto* d = new ClassDescriptor("KIVString", "KIVObject", read_string, -1, nullptr);
        d->set_stored_type(&stored::type_of<KIVString>);
        return d;
    }();
    return descriptor;
}

const bool is_entered = (ClassManager::inq_main()->enter(string_descriptor()), true);

char lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool are_equal_letters(char a, char b)
{
    return lower(a) == lower(b);
}
} // namespace

KIVString::KIVString(const char* from, int n)
{
    if (from && n > 0)
        text.assign(from, strnlen(from, static_cast<std::size_t>(n)));
}

KIVString::KIVString(int value, int width)
{
    char digits[64];
    std::snprintf(digits, sizeof digits, "%0*d", std::clamp(width, 0, 40), value);
    text = digits;
}

KIVString::KIVString(double value)
{
    char digits[40];
    std::snprintf(digits, sizeof digits, "%g", value);
    text = digits;
}

KIVString::KIVString(KIVIStream& stream) : KIVObject(stream)
{
    stream >> *this;
}

void KIVString::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    stream << UCharArray(text.data(), text.size());
}

unsigned long KIVString::hash() const
{
    return std::hash<std::string>()(text);
}

bool KIVString::is_same_as(KIVObject* other)
{
    return other && other->is_kind_of("KIVString") && *this == *static_cast<KIVString*>(other);
}

void KIVString::dump_on(KIVOStream& stream) const
{
    stream << text.c_str();
}

gsl::owner<KIVObject*> KIVString::clone() const
{
    return new KIVString(*this);
}

ClassDescriptor* KIVString::inq_class_descriptor_s()
{
    return string_descriptor();
}

void KIVString::set_class_descriptor_s(ClassDescriptor* descriptor)
{
    string_descriptor() = descriptor;
}

KIVReadFunction KIVString::inq_read_constructor()
{
    return read_string;
}

KIVString* KIVString::read_from(KIVIStream& stream)
{
    return stored::read_as<KIVString>(stream);
}

KIVString& KIVString::operator+=(const KIVString& tail)
{
    text += tail.text;
    return *this;
}

KIVString& KIVString::operator+=(const char* tail)
{
    text += tail ? tail : "";
    return *this;
}

KIVString& KIVString::operator+=(char tail)
{
    text += tail;
    return *this;
}

KIVString KIVString::get_file() const
{
    return std::string_view(text).substr(text.find_last_of('/') + 1);
}

KIVString KIVString::get_path() const
{
    const std::size_t slash = text.find_last_of('/');
    if (slash == std::string::npos)
        return {};
    return std::string_view(text).substr(0, std::max<std::size_t>(slash, 1));
}

KIVString& KIVString::append_path(const KIVString& component)
{
    text = (std::filesystem::path(text) / component.text).string();
    return *this;
}

void KIVString::set_extension(const KIVString& extension)
{
    text = std::filesystem::path(text).replace_extension(extension.text).string();
}

bool KIVString::contains(const KIVString& part) const
{
    return text.find(part.text) != std::string::npos;
}

bool KIVString::contains_no_case(const KIVString& part) const
{
    return !std::ranges::search(text, part.text, are_equal_letters).empty() || part.is_null();
}

bool KIVString::is_equal_no_case(const KIVString& other) const
{
    return std::ranges::equal(text, other.text, are_equal_letters);
}

KIVString operator+(KIVString head, const KIVString& tail)
{
    head += tail;
    return head;
}

KIVString operator+(KIVString head, const char* tail)
{
    head += tail;
    return head;
}

KIVString operator+(const char* head, const KIVString& tail)
{
    return KIVString(head) += tail;
}

KIVOStream& operator<<(KIVOStream& stream, const KIVString& text)
{
    return stream << UCharArray(text.c_str(), text.str().size());
}

KIVIStream& operator>>(KIVIStream& stream, KIVString& text)
{
    std::string bytes;
    WritableUCharArray array(bytes);
    stream >> array;
    text = std::move(bytes);
    return stream;
}
