#include "kivlib/hdr/GeneralIStream.h"

#include "kivlib/hdr/FileHandle.h"

#include <sys/stat.h>

GeneralIStream::GeneralIStream(const char* path) : path(path)
{
    read_file();
    if (inq_error_state() == OKAY)
        open_container();
}

void GeneralIStream::read_file()
{
    const FileHandle file = FileHandle::open_to_read(path.c_str());
    struct stat facts {};
    if (!file.is_open() || ::fstat(file.inq_descriptor(), &facts) != 0) {
        set_error(CANT_OPEN, inq_system_error());
        return;
    }
    if (!S_ISREG(facts.st_mode)) {
        set_error(CANT_READ, "it is no regular file");
        return;
    }
    const auto size = static_cast<std::size_t>(facts.st_size);
    char* to = buffer.reset(size);
    if (buffer.has_failed())
        set_error_state(NO_MEMORY);
    else if (!file.read_all(to, size))
        set_error(CANT_READ, inq_system_error());
}
