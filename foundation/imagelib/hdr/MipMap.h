#pragma once

#include "kivlib/hdr/KIVRectangle.h"
#include "kivlib/hdr/KIVString.h"

#include <cstddef>
#include <memory>
#include <vector>

class CopyMaker;
class KIVPixmap;
class RowFollower;

/// One picture and its smaller copies, each half the size of the one before. The copies are made
/// when they are asked for, and a provider drops them when memory runs short; the rest stays.
class MipMap {
public:
    /// A picture that is already there, taken over. Null makes an unusable one.
    explicit MipMap(gsl::owner<KIVPixmap*> picture);
    virtual ~MipMap();
    MipMap(const MipMap&) = delete;
    MipMap& operator=(const MipMap&) = delete;

    /// Pixels of the picture at its full size.
    int width = 0;
    int height = 0;

    /// Whether there is a picture at all. It turns out with the first pixmap asked for that a file
    /// with a sound head can't be read.
    bool usable = false;

    /// Why it is not usable lies outside the file: memory was lacking, or the disc failed. The
    /// provider reads it again at its next lock.
    bool may_be_usable_later = false;

    virtual bool inq_tiled() const { return false; }

    /// The part of a tiled picture inside four corners of the unit square, for the whole picture
    /// at `width` by `height`; the caller owns it. The corners become the top left, top right,
    /// bottom right and bottom left of what was fetched. Null, and they stay, if the picture isn't
    /// tiled or usable, if a corner is no number, and without memory; a tile that can't be read
    /// makes the picture unusable.
    virtual gsl::owner<KIVPixmap*> new_region_pixmap(Vector2* corners, int width, int height);

    /// The picture in node space: around (0, 0), 60 / dpi units to a pixel, or one unit if the
    /// file tells no resolution.
    KIVRectangle get_frame() const;

    /// The smallest copy that is not smaller than `width` by `height` either way, or the full
    /// picture; without memory for that copy, the next larger one. Null if there is none: the
    /// picture is unusable then. It is always with alpha, and lives until the unlock.
    KIVPixmap* inq_pixmap(int width, int height);

    /// Why there is no picture, for the user; empty if all is well.
    const KIVString& inq_error_msg() const;

    /// Forgets the pixels that can be had again.
    virtual void drop_pixels() {}

    /// Of all copies in memory.
    std::size_t inq_bytes() const;

protected:
    struct CopySize {
        int width;
        int height;
    };

    MipMap();

    /// Reads one of the copies that the file has, 0 being the full picture. Null, with a text for
    /// the user, if it can't; `may_pass` is then whether another attempt may go better. The
    /// follower may be told of its rows as they come.
    virtual gsl::owner<KIVPixmap*> load_copy(std::size_t level, RowFollower& follower,
                                             KIVString& error, bool& may_pass);

    /// The largest copy that may be in memory as a whole.
    virtual std::size_t inq_first_level() const { return 0; }

    void set_size(int width, int height, double x_dpi, double y_dpi);

    /// The same for a file that has copies, the largest first; below them they are made.
    void set_sizes(const std::vector<CopySize>& stored, double x_dpi, double y_dpi);
    void set_unusable(const KIVString& reason, bool may_pass);

    /// The same where the process lacks memory. Needs none.
    void set_without_memory();

    /// The smallest copy that is not smaller than this either way.
    std::size_t find_level(int wanted_width, int wanted_height) const;
    void forget_copies();

    /// Pixels have been made.
    virtual void note_growth() {}

private:
    /// Or the smallest level there is, if it is larger than that.
    KIVPixmap* inq_level(std::size_t level);
    bool load_level(std::size_t level, CopyMaker& copies);

    std::vector<CopySize> sizes;
    std::size_t stored_count = 0;                   // of the copies that the file has
    std::vector<std::unique_ptr<KIVPixmap>> levels; // by size; null while not in memory
    double x_dpi = 0.0;
    double y_dpi = 0.0;
    KIVString error;
    bool has_lacked_memory = false; // which is the error then
};
