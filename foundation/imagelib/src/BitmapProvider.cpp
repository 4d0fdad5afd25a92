#include "imagelib/hdr/BitmapProvider.h"

#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "imagelib/src/PixelCache.h"
#include "imagelib/src/PyramidFile.h"
#include "kivlib/hdr/file_operations.h"

#include <sys/stat.h>

namespace {
/// What changes when a file is written anew.
struct FileStamp {
    bool exists = false;
    long seconds = 0;
    long nanoseconds = 0;
    long size = 0;
    unsigned long number = 0;

    bool operator==(const FileStamp&) const = default;
};

FileStamp inq_stamp(const KIVString& path)
{
    struct stat state = {};
    if (::stat(path.c_str(), &state) != 0)
        return {};
    return {true, state.st_mtim.tv_sec, state.st_mtim.tv_nsec, state.st_size, state.st_ino};
}

/// The picture of a file that is read as a whole.
class FileMipMap : public MipMap {
public:
    FileMipMap(const KIVString& path, int bits, PixelCache::Item& item)
        : path(path), bits(bits), item(item)
    {}

    void set_head(const PictureInfo& info)
    {
        set_size(info.width, info.height, info.x_dpi, info.y_dpi);
    }
    using MipMap::set_unusable;

    void drop_pixels() override { forget_copies(); }

private:
    gsl::owner<KIVPixmap*> load_copy(std::size_t level, KIVString& error) override;
    void note_growth() override { inq_pixel_cache().note_use(item); }

    const KIVString path;
    const int bits;
    PixelCache::Item& item;
};

gsl::owner<KIVPixmap*> FileMipMap::load_copy(std::size_t /*level*/, KIVString& error)
{
    std::unique_ptr<KIVPixmap> picture(new_pixmap_from_file(path, bits, error));
    if (!picture || (picture->inq_width() == width && picture->inq_height() == height))
        return picture.release();
    error = "Can't read image " + path + ": it has changed since it was looked at";
    return nullptr;
}

/// The picture of a file, as a provider keeps it.
class KeptPicture : public PixelCache::Item {
public:
    KeptPicture(const KIVString& path, int bits) : path(path), bits(bits), whole(path, bits, *this)
    {}

    MipMap* inq_mip() { return tiled ? static_cast<MipMap*>(tiled.get()) : &whole; }

    /// Looks at the file if it has changed since.
    void refresh();

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
    const int bits;
    bool is_looked_at = false;
    FileStamp stamp;
    FileMipMap whole;
    std::unique_ptr<TiledMipMap> tiled; // null unless the file is; then this is the picture
};

void KeptPicture::refresh()
{
    const FileStamp now = inq_stamp(path);
    if (is_looked_at && now == stamp)
        return;
    is_looked_at = true;
    stamp = now;
    drop();
    tiled.reset();
    PictureInfo info;
    KIVString error;
    if (!inq_picture_info(path, info, error))
        return whole.set_unusable(error);
    whole.set_head(info);
    if (auto file = info.is_tiled ? PyramidFile::open(path, error) : nullptr)
        tiled = std::make_unique<TiledMipMap>(std::move(file), bits,
                                              [this] { inq_pixel_cache().note_use(*this); });
    if (!error.is_null())
        whole.set_unusable(error);
}
} // namespace

struct BitmapProvider::Contents {
    int bits;
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

BitmapProvider::BitmapProvider(int bits) : contents(new Contents{bits, {}, {}}) {}
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

MipMap* BitmapProvider::lock(int id)
{
    KeptPicture* picture = contents->find(id);
    if (!picture)
        return nullptr;
    if (picture->locks++ == 0)
        picture->refresh();
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

// The colour manager accepts no profile in this release, so there is nothing to pass through.
void CMSBitmapProvider::install() {}
