#pragma once

#include "kivlib/hdr/ClassDescriptor.h"

class ByteBuffer;
class FileHandle;
class KIVPixmap;
class WrittenFile;

/// What the pixels of a frame are like.
struct PictureForm {
    int width;
    int height;
    int samples;
    int bits;
};

/// Writes pixmaps as files of one format. A file is written under another name in its folder and
/// moved over the final one when it is whole and on the disc; a failure leaves what was there.
class KIVPixmapWriter {
public:
    enum WriteError {
        WRITE_OKAY = 0,
        WRITE_CANNOT_OPEN = 1, // the folder is not there or may not be written
        WRITE_NO_ROOM = 2,     // the disc, a quota or a limit of the process
        WRITE_NO_MEMORY = 3,
        WRITE_CANNOT_ENCODE = 4,
        WRITE_WRONG_SIZE = 5, // more, or fewer, pixels than the format can hold
        WRITE_NO_PIXELS = 6,
        WRITE_CANNOT_RENAME = 7,
        WRITE_DISC_FAILED = 216
    };

    virtual ~KIVPixmapWriter() = default;

    /// Adds the format's extension to a `file` without one. The pixmap, which may be null, stays as
    /// it is. False leaves an error.
    bool write_pixmap(const KIVString& file, KIVPixmap* pixmap);

    /// A further file with the contents of `original`, which such a writer wrote.
    bool write_copy(const FileHandle& original, const KIVString& file);

    /// From now on files are whole, but wait for `finish`, so that the next one can be made while
    /// the disc is busy.
    void leave_unfinished() { leaves_unfinished = true; }

    /// Where the last of those waits.
    const KIVString& inq_unfinished() const { return unfinished; }

    /// Waits until the disc holds a file that waits, and gives it its name in place of what had it.
    /// After a failure it is gone.
    static WriteError finish(const KIVString& unfinished, const KIVString& file);

    /// Whether the file is a whole one as this writer makes of a pixmap of the form.
    bool has_finished(const KIVString& file, const PictureForm& form) const;

    /// The file that `write_pixmap` makes of the name.
    KIVString inq_path(const KIVString& file) const;

    int inq_error() const { return error; }

protected:
    /// Gives the whole file to `contents`.
    virtual WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) = 0;
    virtual const char* inq_extension() const = 0;

    /// Whether the file is whole and of the form. Files are never written in place, so an end that
    /// is where it has to be says so.
    virtual bool is_whole(const WrittenFile& file, const PictureForm& form) const = 0;

private:
    WriteError write_file(const KIVString& path, const ByteBuffer& contents);

    int error = WRITE_OKAY;
    bool leaves_unfinished = false;
    KIVString unfinished;
};

/// Names a writer class in the class manager and makes its writers.
class KIVPixmapWriterDescriptor : public ClassDescriptor {
public:
    using NewWriter = gsl::owner<KIVPixmapWriter*> (*)(int variant);

    /// Enters itself in the main class manager.
    KIVPixmapWriterDescriptor(const char* name, NewWriter make);

    /// A writer of the format's `variant`, for the caller to delete; null without one.
    virtual gsl::owner<KIVPixmapWriter*> new_writer(int variant) const;

private:
    NewWriter make;
};
