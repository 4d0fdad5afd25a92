#include "imagelib/hdr/BitmapProvider.h"

#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "imagelib/src/PixelCache.h"
#include "imagelib/src/PyramidFile.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/file_operations.h"

#include <sys/stat.h>

namespace {
/// What changes when a file is written anew, or its pixels are wanted in other colours.
struct FileStamp {
    bool exists = false;
    long seconds = 0;
    long nanoseconds = 0;
    long size = 0;
    unsigned long number = 0;
    int colours = 0; // revision of the output profile that its pixels are brought to; 0 for none

    bool operator==(const FileStamp&) const = default;
};

FileStamp inq_stamp(const KIVString& path, int colours)
{
    struct stat state = {};
    if (::stat(path.c_str(), &state) != 0)
        return {};
    return {true,          state.st_mtim.tv_sec, state.st_mtim.tv_nsec,
            state.st_size, state.st_ino,         colours};
}

/// The picture of a file that is read as a whole.
class FileMipMap : public MipMap {
public:
    FileMipMap(const KIVString& path, int bits, PixelCache::Item& item)
        : path(path), bits(bits), item(item)
    {}

    void set_head(const PictureInfo& info, bool for_output)
    {
        is_for_output = for_output;
        set_size(info.width, info.height, info.x_dpi, info.y_dpi);
    }
    using MipMap::set_unusable;

    void drop_pixels() override { forget_copies(); }

private:
    gsl::owner<KIVPixmap*> load_copy(std::size_t level, RowFollower& follower,
                                     KIVString& error) override;
    void note_growth() override { inq_pixel_cache().note_use(item); }

    const KIVString path;
    const int bits;
    bool is_for_output = false; // and so brought to the output profile
    PixelCache::Item& item;
};

/// Nobody follows pixels that are still to be brought to the output profile.
gsl::owner<KIVPixmap*> FileMipMap::load_copy(std::size_t /*level*/, RowFollower& follower,
                                             KIVString& error)
{
    PictureInfo info;
    std::unique_ptr<KIVPixmap> picture(
        new_pixmap_from_file(path, bits, info, error, is_for_output ? nullptr : &follower));
    if (!picture)
        return nullptr;
    if (picture->inq_width() != width || picture->inq_height() != height)
        error = "Can't read image " + path + ": it has changed since it was looked at";
    else if (is_for_output && !inq_colour_manager()->bring_to_output(*picture, info.profile))
        error = "Can't read image " + path + ": " + WANT_OF_MEMORY;
    else
        return picture.release();
    return nullptr;
}

/// The picture of a file, as a provider keeps it.
class KeptPicture : public PixelCache::Item {
public:
    KeptPicture(const KIVString& path, int bits) : path(path), bits(bits), whole(path, bits, *this)
    {}

    MipMap* inq_mip() { return tiled ? static_cast<MipMap*>(tiled.get()) : &whole; }

    /// Looks at the file if it has changed since, or if other colours are wanted.
    void refresh(int colours);

    std::size_t inq_bytes() const override
    {
        return whole.inq_bytes() + (tiled ? tiled->inq_bytes() : 0);
    }
    bool is_in_use() const override { return locks > 0; }
    void drop() override
    {
        inq_mip()->drop_pixels();
        inq_pixel_cache().forget(*this);
    }

    const KIVString path;
    int holds = 1;
    int locks = 0;

private:
    TiledMipMap::Change make_change(const PictureInfo& info) const;

    const int bits;
    bool is_looked_at = false;
    FileStamp stamp;
    FileMipMap whole;
    std::unique_ptr<TiledMipMap> tiled; // null unless the file is; then this is the picture
};

/// How pixels are brought to the output profile, if they are at all.
TiledMipMap::Change KeptPicture::make_change(const PictureInfo& info) const
{
    if (stamp.colours == 0)
        return nullptr;
    return [profile = info.profile](KIVPixmap& pixels) {
        return inq_colour_manager()->bring_to_output(pixels, profile);
    };
}

void KeptPicture::refresh(int colours)
{
    const FileStamp now = inq_stamp(path, colours);
    if (is_looked_at && now == stamp && !is_want_of_memory(inq_mip()->inq_error_msg()))
        return;
    is_looked_at = true;
    stamp = now;
    drop();
    tiled.reset();
    PictureInfo info;
    KIVString error;
    if (!inq_picture_info(path, info, error))
        return whole.set_unusable(error);
    whole.set_head(info, stamp.colours != 0);
    if (auto file = info.is_tiled ? PyramidFile::open(path, error) : nullptr)
        tiled = std::make_unique<TiledMipMap>(std::move(file), info, bits, make_change(info),
                                              [this] { inq_pixel_cache().note_use(*this); });
    if (!error.is_null())
        whole.set_unusable(error);
}
} // namespace

struct BitmapProvider::Contents {
    int bits;
    bool is_colour_managed;
    std::vector<std::unique_ptr<KeptPicture>> pictures; // by id; null once it is given back
    std::unordered_map<std::string, int> ids;

    KeptPicture* find(int id) const
    {
        const bool is_known = id >= 0 && static_cast<std::size_t>(id) < pictures.size();
        return is_known ? pictures[static_cast<std::size_t>(id)].get() : nullptr;
    }
    void delete_if_unused(int id)
    {
        const KeptPicture* picture = find(id);
        if (picture->holds == 0 && picture->locks == 0)
            pictures[static_cast<std::size_t>(id)].reset();
    }
};

BitmapProvider::BitmapProvider(int bits) : contents(new Contents{bits, false, {}, {}}) {}
BitmapProvider::~BitmapProvider() = default;

int BitmapProvider::new_image_id(const KIVString& file)
{
    const KIVString path = inq_absolute_path(file);
    const auto [place, is_new] =
        contents->ids.try_emplace(path.str(), static_cast<int>(contents->pictures.size()));
    if (is_new)
        contents->pictures.push_back(std::make_unique<KeptPicture>(path, contents->bits));
    else
        hold_object_id(place->second);
    return place->second;
}

KIVString BitmapProvider::inq_file(int id) const
{
    const KeptPicture* picture = contents->find(id);
    return picture ? picture->path : KIVString();
}

MipMap* BitmapProvider::lock(int id)
{
    KeptPicture* picture = contents->find(id);
    if (!picture)
        return nullptr;
    if (picture->locks++ == 0)
        picture->refresh(contents->is_colour_managed ? inq_colour_manager()->inq_output_revision()
                                                     : 0);
    return picture->inq_mip();
}

void BitmapProvider::unlock(int id)
{
    KeptPicture* picture = contents->find(id);
    if (!picture || picture->locks == 0)
        return;
    --picture->locks;
    inq_pixel_cache().note_use(*picture);
    contents->delete_if_unused(id);
}

void BitmapProvider::hold_object_id(int id)
{
    if (KeptPicture* picture = contents->find(id))
        ++picture->holds;
}

void BitmapProvider::delete_object_id(int id)
{
    KeptPicture* picture = contents->find(id);
    if (!picture || picture->holds == 0)
        return;
    if (--picture->holds == 0)
        contents->ids.erase(picture->path.str());
    contents->delete_if_unused(id);
}

void BitmapProvider::set_cache_limit(std::size_t bytes)
{
    inq_pixel_cache().set_limit(bytes);
}

std::size_t BitmapProvider::inq_cache_limit()
{
    return inq_pixel_cache().inq_limit();
}

std::size_t BitmapProvider::inq_cached_bytes()
{
    return inq_pixel_cache().inq_total();
}

// The providers of the process are never deleted: ids may be given back until its end.
BitmapProvider_8* inq_bitmap_provider_8()
{
    static auto* provider = new BitmapProvider_8;
    return provider;
}

BitmapProvider_16* inq_bitmap_provider_16()
{
    static auto* provider = new BitmapProvider_16;
    return provider;
}

// They stay the same objects, so that ids and locks from before are those of after.
void CMSBitmapProvider::install()
{
    inq_bitmap_provider_8()->contents->is_colour_managed = true;
    inq_bitmap_provider_16()->contents->is_colour_managed = true;
}
