#include "imagelib/hdr/KIVPixmapWriter.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "imagelib/src/FileContents.h"
#include "imagelib/src/WrittenFile.h"
#include "kivlib/hdr/ClassManager.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {
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

KIVPixmapWriter::WriteError read_file(const FileHandle& file, ByteBuffer& contents)
{
    struct stat facts {};
    if (::fstat(file.inq_descriptor(), &facts) != 0)
        return KIVPixmapWriter::WRITE_CANNOT_OPEN;
    const auto size = static_cast<std::size_t>(facts.st_size);
    char* memory = contents.reset(size);
    if (!memory)
        return KIVPixmapWriter::WRITE_NO_MEMORY;
    return file.read_all(memory, size) ? KIVPixmapWriter::WRITE_OKAY
                                       : KIVPixmapWriter::WRITE_CANNOT_OPEN;
}

/// Makes the contents of a file by `make`, which may fail, and writes them by `write`.
template <class Make, class Write>
KIVPixmapWriter::WriteError make_and_write(Make make, Write write)
{
    try {
        FileContents contents;
        const KIVPixmapWriter::WriteError failure = make(*contents);
        if ((*contents).has_failed()) // whatever else came of that
            return KIVPixmapWriter::WRITE_NO_MEMORY;
        return failure == KIVPixmapWriter::WRITE_OKAY ? write(*contents) : failure;
    } catch (const std::bad_alloc&) {
        return KIVPixmapWriter::WRITE_NO_MEMORY;
    }
}
} // namespace

bool KIVPixmapWriter::write_pixmap(const KIVString& file, KIVPixmap* pixmap)
{
    error = WRITE_NO_PIXELS;
    if (!pixmap || pixmap->inq_is_empty())
        return false;
    error = make_and_write(
        [&](ByteBuffer& contents) { return encode(std::as_const(*pixmap), contents); },
        [&](const ByteBuffer& contents) { return write_file(inq_path(file), contents); });
    return error == WRITE_OKAY;
}

bool KIVPixmapWriter::write_copy(const FileHandle& original, const KIVString& file)
{
    error = make_and_write(
        [&](ByteBuffer& contents) { return read_file(original, contents); },
        [&](const ByteBuffer& contents) { return write_file(inq_path(file), contents); });
    return error == WRITE_OKAY;
}

KIVPixmapWriter::WriteError KIVPixmapWriter::write_file(const KIVString& path,
                                                        const ByteBuffer& contents)
{
    UnfinishedFile file;
    if (!file.create(path))
        return inq_last_error(WRITE_CANNOT_OPEN);
    const bool is_whole = file.inq_handle().write_all(contents.data(), contents.size()) &&
                          (leaves_unfinished ? file.leave(unfinished) : file.close());
    if (!is_whole)
        return inq_last_error(WRITE_DISC_FAILED);
    return leaves_unfinished || file.finish() ? WRITE_OKAY : WRITE_CANNOT_RENAME;
}

KIVPixmapWriter::WriteError KIVPixmapWriter::finish(const KIVString& unfinished,
                                                    const KIVString& path)
{
    WriteError failure = WRITE_OKAY;
    const FileHandle file = FileHandle::open_to_read(unfinished.c_str());
    if (!file.is_open() || !file.sync())
        failure = inq_last_error(WRITE_DISC_FAILED);
    else if (std::rename(unfinished.c_str(), path.c_str()) != 0)
        failure = WRITE_CANNOT_RENAME;
    if (failure != WRITE_OKAY)
        ::unlink(unfinished.c_str());
    return failure;
}

bool KIVPixmapWriter::has_finished(const KIVString& path, const PictureForm& form) const
{
    const WrittenFile file(path);
    return file.inq_size() > 0 && is_whole(file, form);
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
