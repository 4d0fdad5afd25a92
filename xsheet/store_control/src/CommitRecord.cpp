#include "xsheet/store_control/hdr/CommitRecord.h"

#include "kivlib/hdr/FileHandle.h"
#include "xsheet/store_control/hdr/SceneParts.h"

#include <cerrno>
#include <charconv>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr char FIRST_LINE[] = "COMMIT 1\n";
constexpr char LAST_WORD[] = "END ";
constexpr int PERMISSIONS = 0666;
constexpr std::size_t SUM_DIGITS = 2 * sizeof(Checksum::Value);
constexpr int HEXADECIMAL = 16;

std::string hexadecimal(Checksum::Value sum)
{
    char digits[SUM_DIGITS];
    const char* end = std::to_chars(digits, digits + SUM_DIGITS, sum, HEXADECIMAL).ptr;
    const auto n = static_cast<std::size_t>(end - digits);
    return std::string(SUM_DIGITS - n, '0').append(digits, n);
}

Checksum::Value sum_of(std::string_view text)
{
    Checksum checksum;
    checksum.add(text.data(), text.size());
    return checksum.get();
}

bool is_part(std::string_view name)
{
    return std::ranges::find(SCENE_PARTS, name) != SCENE_PARTS.end();
}

/// What stands before the next `end`, which is taken off `text` with it; none without an end.
std::optional<std::string_view> take_until(std::string_view& text, char end)
{
    const std::size_t n = text.find(end);
    if (n == std::string_view::npos)
        return {};
    const std::string_view taken = text.substr(0, n);
    text.remove_prefix(n + 1);
    return taken;
}

bool read_number(std::string_view text, std::uint64_t& number, int base)
{
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end;
}

/// "name size sum\n"
std::optional<CommitRecord::Part> take_part(std::string_view& text)
{
    const auto name = take_until(text, ' ');
    const auto size = take_until(text, ' ');
    const auto sum = take_until(text, '\n');
    FileSum facts;
    if (!name || !size || !sum || !is_part(*name) || !read_number(*size, facts.size, 10) ||
        !read_number(*sum, facts.sum, HEXADECIMAL))
        return {};
    return CommitRecord::Part{KIVString(*name), facts};
}

bool holds(const std::vector<CommitRecord::Part>& parts, const KIVString& name)
{
    return std::ranges::any_of(parts, [&](const auto& part) { return part.name == name; });
}

KIVString path_in(const KIVString& folder)
{
    KIVString path = folder;
    return path.append_path(CommitRecord::FILE_NAME);
}
} // namespace

std::string CommitRecord::inq_text() const
{
    std::string text = FIRST_LINE;
    for (const Part& part : parts)
        text += part.name.str() + ' ' + std::to_string(part.sum.size) + ' ' +
                hexadecimal(part.sum.sum) + '\n';
    return text + LAST_WORD + hexadecimal(sum_of(text)) + '\n';
}

std::optional<CommitRecord> CommitRecord::parse(std::string_view text)
{
    constexpr std::size_t END_SIZE = sizeof LAST_WORD - 1 + SUM_DIGITS + 1;
    if (text.size() < sizeof FIRST_LINE - 1 + END_SIZE || !text.starts_with(FIRST_LINE))
        return {};
    std::string_view body = text.substr(0, text.size() - END_SIZE);
    if (text.substr(body.size()) != LAST_WORD + hexadecimal(sum_of(body)) + '\n')
        return {};
    body.remove_prefix(sizeof FIRST_LINE - 1);
    std::vector<Part> parts;
    while (!body.empty()) {
        const std::optional<Part> part = take_part(body);
        if (!part || holds(parts, part->name))
            return {};
        parts.push_back(*part);
    }
    return parts.empty() ? std::nullopt : std::optional(CommitRecord(std::move(parts)));
}

std::optional<CommitRecord> CommitRecord::read(const KIVString& folder, bool* is_unread)
{
    const FileHandle file = FileHandle::open_the_file_itself(path_in(folder).c_str());
    *is_unread = !file.is_open() && errno != ENOENT && errno != ELOOP; // a link is no record
    if (!file.is_open())
        return {};
    struct stat facts {};
    *is_unread = ::fstat(file.inq_descriptor(), &facts) != 0;
    if (*is_unread || !S_ISREG(facts.st_mode) || facts.st_size > std::int64_t(MOST_BYTES))
        return {};
    std::string text(static_cast<std::size_t>(facts.st_size), '\0');
    *is_unread = !file.read_all(text.data(), text.size());
    return *is_unread ? std::nullopt : parse(text);
}

bool CommitRecord::sync(const KIVString& folder)
{
    const FileHandle file = FileHandle::open_the_file_itself(path_in(folder).c_str());
    return file.is_open() && file.sync() && sync_folder(folder);
}

bool CommitRecord::write(const KIVString& folder) const
{
    const KIVString path = path_in(folder);
    const std::string text = inq_text();
    ::unlink(path.c_str());
    FileHandle file = FileHandle::create(path.c_str(), PERMISSIONS);
    return text.size() <= MOST_BYTES && file.is_open() &&
           file.write_all(text.data(), text.size()) && file.sync() && file.close() &&
           sync_folder(folder);
}
