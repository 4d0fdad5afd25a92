#pragma once

#include "imagelib/hdr/MipMap.h"

#include <cstdint>
#include <functional>
#include <unordered_map>

class KIVStringSet;
class PyramidFile;
struct PictureInfo;

/// A picture whose file holds it and its smaller copies in tiles. It delivers parts of itself and
/// reads only the tiles that they need, which stay in memory under the limit of the providers.
class TiledMipMap : public MipMap {
public:
    /// What becomes of pixels once they are read. False without memory.
    using Change = std::function<bool(KIVPixmap& pixels)>;

    /// `info` is what the head of the file tells, `bits` per sample of what is given out. `change`
    /// may be empty. `note_growth` is called when a whole copy has come into memory.
    TiledMipMap(std::unique_ptr<PyramidFile> file, const PictureInfo& info, int bits, Change change,
                std::function<void()> note_growth);
    ~TiledMipMap() override;

    bool inq_tiled() const override { return true; }
    gsl::owner<KIVPixmap*> new_region_pixmap(Vector2* corners, int width, int height) override;

    void drop_pixels() override { forget_copies(); }

    /// The extensions of the tiled formats that can be read.
    static KIVStringSet inq_tiled_extensions();

private:
    class Tile;
    struct Area;

    gsl::owner<KIVPixmap*> load_copy(std::size_t level, RowFollower& follower, KIVString& error,
                                     bool& may_pass) override;
    std::unique_ptr<KIVPixmap> make_copy(std::size_t level, KIVString& error, bool& may_pass);
    std::unique_ptr<KIVPixmap> make_region(Vector2* corners, int shown_width, int shown_height);
    std::size_t inq_first_level() const override;
    void note_growth() override { tell_growth(); }

    Area find_area(const Vector2* corners, int width, int height) const;
    bool fill(KIVPixmap& region, const Area& area);
    Tile* find_tile(std::size_t level, int column, int row, KIVString& error, bool& may_pass);

    std::unique_ptr<PyramidFile> file;
    int bits;
    Change change;
    std::function<void()> tell_growth;
    std::unordered_map<std::uint64_t, std::unique_ptr<Tile>> tiles; // by place
};
