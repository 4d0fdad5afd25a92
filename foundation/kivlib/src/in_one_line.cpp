#include "kivlib/hdr/in_one_line.h"

namespace {
constexpr char HEX[] = "0123456789abcdef";

std::string escape(unsigned char c)
{
    switch (c) {
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '\\':
        return "\\\\";
    default:
        return {'\\', 'x', HEX[c >> 4], HEX[c & 0xf]};
    }
}
} // namespace

KIVString in_one_line(std::string_view text)
{
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        constexpr unsigned char FIRST_PRINTABLE = 0x20, DELETE = 0x7f;
        if (byte < FIRST_PRINTABLE || byte == DELETE || c == '\\')
            line += escape(byte);
        else
            line += c;
    }
    return line;
}
