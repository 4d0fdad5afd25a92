#include "imagelib/src/WrittenFile.h"

#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"

#include <sys/stat.h>
#include <unistd.h>

WrittenFile::WrittenFile(const KIVString& path)
    : path(path), handle(FileHandle::open_to_read(path.c_str()))
{
    struct stat facts {};
    if (::fstat(handle.inq_descriptor(), &facts) == 0 && S_ISREG(facts.st_mode))
        size = static_cast<std::size_t>(facts.st_size);
}

bool WrittenFile::has(std::size_t place, Bytes bytes) const
{
    std::vector<unsigned char> found(bytes.size());
    const ssize_t count =
        ::pread(handle.inq_descriptor(), found.data(), found.size(), static_cast<off_t>(place));
    return count == static_cast<ssize_t>(found.size()) && std::ranges::equal(found, bytes);
}

bool WrittenFile::can_be_read(const PictureForm& form) const
{
    KIVString error;
    const std::unique_ptr<KIVPixmap> picture(new_pixmap_from_file(path, form.bits, error));
    return picture && picture->inq_width() == form.width && picture->inq_height() == form.height;
}
