#pragma once

#include "imagelib/src/TiffPage.h"
#include "imagelib/src/TiffStream.h"
#include "kivlib/hdr/FileHandle.h"

/// A TIFF file that holds a picture and its smaller copies in tiles. The file is open only while
/// tiles are read.
class PyramidFile {
public:
    struct Level {
        TiffPage page;
        std::uint64_t offset; // of its directory

        bool operator==(const Level&) const = default;
    };

    /// Null for a file that is nothing of the kind, or that is cut; then there is a text for the
    /// user.
    static std::unique_ptr<PyramidFile> open(const KIVString& path, KIVString& error);

    /// The largest first.
    const std::vector<Level>& inq_levels() const { return levels; }

    /// Puts a tile at a place in a pixmap with alpha, where what juts out is cut off. False, with a
    /// text for the user, if it can't be read; `errno` is 0 unless the system knows the reason.
    bool read_tile(std::size_t level, int column, int row, KIVPixmap& to, int x, int y,
                   KIVString& error);

    /// Opens itself again.
    void close();

private:
    explicit PyramidFile(const KIVString& path) : path(path) {}

    bool is_ready(KIVString& error);
    bool open_file();
    bool stand_at(std::size_t level);

    KIVString path;
    FileHandle file;
    std::unique_ptr<TiffStream> stream;
    TIFF* tiff = nullptr; // null while closed
    std::vector<Level> levels;
    std::size_t current = 0; // level that the open file stands at
    std::vector<unsigned char> block;
};
