#include "imagelib/src/TiffStream.h"

#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/FileHandle.h"

#include <cstdio>
#include <unistd.h>

namespace {
TiffStream* to_stream(thandle_t self)
{
    return static_cast<TiffStream*>(self);
}

/// Gives the bytes read, which are fewer where the file ends.
std::size_t read_at(const FileHandle& file, std::size_t position, char* to, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t n = ::pread(file.inq_descriptor(), to + done, count - done,
                                  static_cast<off_t>(position + done));
        if (n == 0 || (n < 0 && errno != EINTR))
            break;
        done += static_cast<std::size_t>(std::max<ssize_t>(n, 0));
    }
    return done;
}

int take_warning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                 va_list /*values*/)
{
    return 1;
}
} // namespace

void TiffWords::take(const char* format, va_list values)
{
    if (text[0] == '\0')
        std::vsnprintf(text, sizeof(text), format, values);
}

TIFF* TiffStream::open(const char* mode)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options, take_error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, take_warning, this);
    if (largest_block)
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(largest_block));
    const auto close_nothing = [](thandle_t) { return 0; };
    tiff = TIFFClientOpenExt("", mode, this, read, write, seek, close_nothing, inq_size, nullptr,
                             nullptr, options);
    TIFFOpenOptionsFree(options);
    return tiff;
}

bool TiffStream::close()
{
    if (tiff)
        TIFFClose(tiff);
    tiff = nullptr;
    return !has_failed && !(growing && growing->has_failed());
}

std::size_t TiffStream::size_now() const
{
    return growing ? growing->size() : size;
}

tmsize_t TiffStream::read(thandle_t self, void* to, tmsize_t count)
{
    TiffStream& m = *to_stream(self);
    const std::size_t end = m.size_now();
    m.ended_early = m.ended_early || m.position + static_cast<std::size_t>(count) > end;
    if (count <= 0 || m.position >= end)
        return 0;
    std::size_t n = std::min(static_cast<std::size_t>(count), end - m.position);
    if (m.growing)
        std::memcpy(to, m.growing->data() + m.position, n);
    else
        n = read_at(*m.file, m.position, static_cast<char*>(to), n);
    m.position += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t TiffStream::write(thandle_t self, void* from, tmsize_t count)
{
    TiffStream& m = *to_stream(self);
    if (!m.growing || count < 0)
        return 0;
    const std::size_t end = m.position + static_cast<std::size_t>(count);
    const std::size_t old_end = m.growing->size();
    if (end > old_end && !m.growing->extend(end - old_end)) {
        m.has_failed = true;
        return 0;
    }
    if (m.position > old_end)
        std::memset(m.growing->data() + old_end, 0, m.position - old_end);
    std::memcpy(m.growing->data() + m.position, from, static_cast<std::size_t>(count));
    m.position = end;
    return count;
}

toff_t TiffStream::seek(thandle_t self, toff_t offset, int whence)
{
    TiffStream& m = *to_stream(self);
    if (whence == SEEK_CUR)
        offset += m.position;
    else if (whence == SEEK_END)
        offset += m.size_now();
    m.position = offset;
    return offset;
}

toff_t TiffStream::inq_size(thandle_t self)
{
    return to_stream(self)->size_now();
}

int TiffStream::take_error(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format,
                           va_list values)
{
    TiffStream& m = *static_cast<TiffStream*>(self);
    m.has_failed = true;
    m.words.take(format, values);
    return 1;
}
