#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstdarg>
#include <cstddef>
#include <tiffio.h>

class ByteBuffer;
class FileHandle;

/// What the format's library has to complain about, first of all. It is taken without memory, for
/// want of which no exception may pass through the library.
class TiffWords {
public:
    void take(const char* format, va_list values);

    KIVString inq_text(const char* otherwise) const
    {
        return text[0] == '\0' ? KIVString(otherwise) : KIVString(text);
    }

private:
    char text[256] = "";
};

/// The bytes of a TIFF file, which is open at most once: on disc to be read, and only where the
/// format's library looks; in memory to be written. What the library has to complain about is kept
/// for the user, and nothing is printed.
class TiffStream {
public:
    /// To be written; it grows from empty.
    explicit TiffStream(ByteBuffer& growing) : growing(&growing) {}

    /// To be read. `largest_block`: no single allocation may be larger.
    TiffStream(const FileHandle& file, std::size_t size, std::size_t largest_block)
        : file(&file), size(size), largest_block(largest_block)
    {}
    TiffStream(const TiffStream&) = delete;
    TiffStream& operator=(const TiffStream&) = delete;
    ~TiffStream() { close(); }

    /// Null on failure. The file is closed by `close` or with this.
    TIFF* open_to_write() { return open("wl"); }
    TIFF* open_to_read() { return open("r"); }

    /// False if any write has failed.
    bool close();

    /// Why something failed, for the user.
    KIVString inq_error(const char* otherwise) const { return words.inq_text(otherwise); }

    /// Whether anything was looked for behind the end of the file, even if the library makes do
    /// without.
    bool has_ended_early() const { return ended_early; }

private:
    TIFF* open(const char* mode);
    static tmsize_t read(thandle_t self, void* to, tmsize_t count);
    static tmsize_t write(thandle_t self, void* from, tmsize_t count);
    static toff_t seek(thandle_t self, toff_t offset, int whence);
    static toff_t inq_size(thandle_t self);
    static int take_error(TIFF* tiff, void* self, const char* module, const char* format,
                          va_list values);
    std::size_t size_now() const;

    ByteBuffer* growing = nullptr;    // not owned
    const FileHandle* file = nullptr; // not owned
    std::size_t size = 0;
    std::size_t largest_block = 0;
    std::size_t position = 0;
    bool has_failed = false;
    bool ended_early = false;
    TIFF* tiff = nullptr;
    TiffWords words;
};
