#pragma once

#include "imagelib/hdr/ProfileData.h"
#include "kivlib/hdr/KIVString.h"

class KIVPixmap;
class PCharArray;

/// The extensions of the files that can be read, without dots.
PCharArray inq_pixmap_readable_file_exts();

/// What the head of a picture file tells.
struct PictureInfo {
    int width = 0;
    int height = 0;
    double x_dpi = 0.0; // 0: not told
    double y_dpi = 0.0;
    int bits = 8;          // per sample that are worth reading, 8 or 16
    bool is_tiled = false; // it may hold smaller copies of the picture, too
    ProfileData profile;   // that the colours are meant for
};

/// False, with a text for the user, for a file that is no picture. The format is known by the
/// contents, whatever the name. `may_pass`, unless it is null, tells of a failure whether its
/// reason lies outside the file: memory was lacking, or the disc failed.
bool inq_picture_info(const KIVString& file, PictureInfo& info, KIVString& error,
                      bool* may_pass = nullptr);

/// Works on the rows of a picture as they come from its file.
class RowFollower {
public:
    virtual ~RowFollower() = default;

    /// The first `rows` rows of the picture are there, and stay as they are if all of it can be
    /// read.
    virtual void take_rows(KIVPixmap& picture, int rows) = 0;
};

/// The picture with alpha at 8 or 16 bits per sample, for the caller to delete; null, with a text
/// for the user, if any of it can't be read. The colours are those of the file. A follower is told
/// of the rows unless they come in another order than from the top, or are turned afterwards; it
/// may be null, and so may `may_pass`, which is as above.
gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, PictureInfo& info,
                                            KIVString& error, RowFollower* follower = nullptr,
                                            bool* may_pass = nullptr);
gsl::owner<KIVPixmap*> new_pixmap_from_file(const KIVString& file, int bits, KIVString& error);
