#include "imagelib/src/TiffMemory.h"

#include "kivlib/hdr/ByteBuffer.h"

#include <cstdarg>
#include <cstdio>

namespace {
TiffMemory* to_memory(thandle_t self)
{
    return static_cast<TiffMemory*>(self);
}

int take_warning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/, const char* /*format*/,
                 va_list /*values*/)
{
    return 1;
}
} // namespace

TIFF* TiffMemory::open(const char* mode)
{
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options)
        return nullptr;
    TIFFOpenOptionsSetErrorHandlerExtR(options, take_error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, take_warning, this);
    if (largest_block)
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(largest_block));
    const auto close_nothing = [](thandle_t) { return 0; };
    const auto unmap = [](thandle_t, void*, toff_t) {};
    tiff = TIFFClientOpenExt("", mode, this, read, write, seek, close_nothing, inq_size, map, unmap,
                             options);
    TIFFOpenOptionsFree(options);
    return tiff;
}

bool TiffMemory::close()
{
    if (tiff)
        TIFFClose(tiff);
    tiff = nullptr;
    return !has_failed && !(growing && growing->has_failed());
}

std::size_t TiffMemory::size_now() const
{
    return growing ? growing->size() : size;
}

tmsize_t TiffMemory::read(thandle_t self, void* to, tmsize_t count)
{
    TiffMemory& m = *to_memory(self);
    const std::size_t end = m.size_now();
    if (count <= 0 || m.position >= end)
        return 0;
    const std::size_t n = std::min(static_cast<std::size_t>(count), end - m.position);
    const void* from = m.growing ? static_cast<const void*>(m.growing->data() + m.position)
                                 : static_cast<const void*>(m.bytes + m.position);
    std::memcpy(to, from, n);
    m.position += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t TiffMemory::write(thandle_t self, void* from, tmsize_t count)
{
    TiffMemory& m = *to_memory(self);
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

toff_t TiffMemory::seek(thandle_t self, toff_t offset, int whence)
{
    TiffMemory& m = *to_memory(self);
    if (whence == SEEK_CUR)
        offset += m.position;
    else if (whence == SEEK_END)
        offset += m.size_now();
    m.position = offset;
    return offset;
}

toff_t TiffMemory::inq_size(thandle_t self)
{
    return to_memory(self)->size_now();
}

int TiffMemory::map(thandle_t self, void** base, toff_t* size)
{
    const TiffMemory& m = *to_memory(self);
    if (m.growing)
        return 0;
    *base = const_cast<unsigned char*>(m.bytes); // only ever read
    *size = m.size;
    return 1;
}

int TiffMemory::take_error(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format,
                           va_list values)
{
    char text[256];
    std::vsnprintf(text, sizeof(text), format, values);
    TiffMemory& m = *static_cast<TiffMemory*>(self);
    m.has_failed = true;
    if (m.error.is_null())
        m.error = text;
    return 1;
}
