#include "imagelib/hdr/KIVPixmapWriter.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/ClassManager.h"
#include "kivlib/hdr/FileHandle.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int PERMISSIONS = 0666;

std::string add_extension(const KIVString& file, const char* extension)
{
    const bool has_one = std::filesystem::path(file.str()).has_extension();
    return has_one ? file.str() : file.str() + "." + extension;
}

/// Why the last call failed: there was no room, or `otherwise`.
KIVPixmapWriter::WriteError inq_last_error(KIVPixmapWriter::WriteError otherwise)
{
    const bool is_full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG;
    return is_full ? KIVPixmapWriter::WRITE_NO_ROOM : otherwise;
}

KIVPixmapWriter::WriteError put_on_disc(const std::string& path, const ByteBuffer& contents)
{
    FileHandle file = FileHandle::open_to_write(path.c_str(), PERMISSIONS);
    if (!file.is_open())
        return inq_last_error(KIVPixmapWriter::WRITE_CANNOT_OPEN);
    const bool is_whole =
        file.write_all(contents.data(), contents.size()) && file.sync() && file.close();
    return is_whole ? KIVPixmapWriter::WRITE_OKAY
                    : inq_last_error(KIVPixmapWriter::WRITE_DISC_FAILED);
}

/// The other name is this process's own, so that two renders of one frame do not meet.
KIVPixmapWriter::WriteError replace_file(const std::string& path, const ByteBuffer& contents)
{
    const std::string other = path + "." + std::to_string(::getpid()) + "~";
    KIVPixmapWriter::WriteError error = put_on_disc(other, contents);
    if (error == KIVPixmapWriter::WRITE_OKAY && std::rename(other.c_str(), path.c_str()) != 0)
        error = KIVPixmapWriter::WRITE_CANNOT_RENAME;
    if (error != KIVPixmapWriter::WRITE_OKAY && error != KIVPixmapWriter::WRITE_CANNOT_OPEN)
        ::unlink(other.c_str());
    return error;
}

KIVPixmapWriter::WriteError read_file(const KIVString& path, ByteBuffer& contents)
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0)
        return KIVPixmapWriter::WRITE_CANNOT_OPEN;
    const auto size = static_cast<std::size_t>(facts.st_size);
    char* memory = contents.reset(size);
    if (!memory)
        return KIVPixmapWriter::WRITE_NO_MEMORY;
    return file.read_all(memory, size) ? KIVPixmapWriter::WRITE_OKAY
                                       : KIVPixmapWriter::WRITE_CANNOT_OPEN;
}

/// Memory for the contents of a file. That of the last one is taken again, since fresh pages cost
/// more than copying a frame into them.
class FileContents {
public:
    FileContents() : buffer(std::move(our_last))
    {
        if (!buffer || buffer->has_failed())
            buffer = std::make_unique<ByteBuffer>();
        buffer->set_size(0);
    }
    FileContents(const FileContents&) = delete;
    FileContents& operator=(const FileContents&) = delete;
    ~FileContents()
    {
        constexpr std::size_t MOST_KEPT = std::size_t{64} << 20;
        if (buffer->capacity() <= MOST_KEPT)
            our_last = std::move(buffer);
    }

    ByteBuffer& operator*() { return *buffer; }

private:
    static thread_local std::unique_ptr<ByteBuffer> our_last;

    std::unique_ptr<ByteBuffer> buffer;
};

thread_local std::unique_ptr<ByteBuffer> FileContents::our_last;
} // namespace

bool KIVPixmapWriter::write_pixmap(const KIVString& file, KIVPixmap* pixmap)
{
    error = WRITE_NO_PIXELS;
    if (!pixmap || !pixmap->inq_data())
        return false;
    FileContents contents;
    try {
        error = encode(*pixmap, *contents);
    } catch (const std::bad_alloc&) {
        error = WRITE_NO_MEMORY;
    }
    if (error == WRITE_OKAY && (*contents).has_failed())
        error = WRITE_NO_MEMORY;
    if (error == WRITE_OKAY)
        error = replace_file(inq_path(file).str(), *contents);
    return error == WRITE_OKAY;
}

bool KIVPixmapWriter::write_copy(const KIVString& original, const KIVString& file)
{
    FileContents contents;
    error = read_file(original, *contents);
    if (error == WRITE_OKAY)
        error = replace_file(inq_path(file).str(), *contents);
    return error == WRITE_OKAY;
}

KIVString KIVPixmapWriter::inq_path(const KIVString& file) const
{
    return add_extension(file, inq_extension());
}

KIVPixmapWriterDescriptor::KIVPixmapWriterDescriptor(const char* name, NewWriter make)
    : ClassDescriptor(name, "KIVPixmapWriter", nullptr, -1, ClassManager::inq_main()), make(make)
{}

gsl::owner<KIVPixmapWriter*> KIVPixmapWriterDescriptor::new_writer(int variant) const
{
    return make ? make(variant) : nullptr;
}
