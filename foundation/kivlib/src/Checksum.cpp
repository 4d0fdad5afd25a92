#include "kivlib/hdr/Checksum.h"

#include "kivlib/hdr/FileHandle.h"

#include <sys/stat.h>
#include <xxhash.h>

Checksum::Checksum() : state(XXH3_createState())
{
    XXH3_64bits_reset(state);
}

Checksum::~Checksum()
{
    XXH3_freeState(state);
}

void Checksum::add(const void* bytes, std::size_t size)
{
    XXH3_64bits_update(state, bytes, size);
}

Checksum::Value Checksum::get() const
{
    return XXH3_64bits_digest(state);
}

std::optional<FileSum> inq_file_sum(const KIVString& path)
{
    constexpr std::size_t PIECE = 1 << 20; // bytes read at a time
    const FileHandle file = FileHandle::open_the_file_itself(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0 || !S_ISREG(facts.st_mode))
        return {};
    const auto size = static_cast<std::size_t>(facts.st_size);
    std::vector<char> piece(std::min(size, PIECE));
    Checksum checksum;
    for (std::size_t left = size; left > 0; left -= std::min(left, PIECE)) {
        const std::size_t n = std::min(left, PIECE);
        if (!file.read_all(piece.data(), n))
            return {};
        checksum.add(piece.data(), n);
    }
    return FileSum{size, checksum.get()};
}
