#include "imagelib/hdr/BitmapProvider.h"

#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "kivlib/hdr/file_operations.h"

#include <list>
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

class FileMipMap;
using PictureList = std::list<FileMipMap*>; // not owned

/// The pictures whose pixels are in memory, the last used one first.
class PictureCache {
public:
    /// `picture` has been used, or its pixels have changed.
    void note_use(FileMipMap& picture);
    void forget(FileMipMap& picture);
    void drop_excess();

    std::size_t total = 0;
    std::size_t limit = std::size_t{512} << 20;

private:
    PictureList pictures;
};

PictureCache& inq_cache()
{
    static auto* cache = new PictureCache; // outlives every provider
    return *cache;
}

/// The picture of a file, as a provider keeps it.
class FileMipMap : public MipMap {
public:
    FileMipMap(const KIVString& path, int bits) : path(path), bits(bits) {}
    ~FileMipMap() override { inq_cache().forget(*this); }

    /// Looks at the file if it has changed since, or if other colours are wanted.
    void refresh(int colours);

    void drop()
    {
        drop_pixels();
        inq_cache().note_use(*this);
    }
    std::size_t inq_bytes() const { return MipMap::inq_bytes(); }

    const KIVString path;
    int holds = 1;
    int locks = 0;

private:
    friend class PictureCache;

    gsl::owner<KIVPixmap*> load_picture(KIVString& error) override;
    void note_growth() override { inq_cache().note_use(*this); }

    const int bits;
    bool is_looked_at = false;
    FileStamp stamp;
    std::size_t counted_bytes = 0; // by the cache; 0 if it isn't there
    PictureList::iterator place;   // in the cache
};

void PictureCache::note_use(FileMipMap& picture)
{
    const std::size_t bytes = picture.inq_bytes();
    if (bytes == 0)
        return forget(picture);
    if (picture.counted_bytes == 0)
        picture.place = pictures.insert(pictures.begin(), &picture);
    else
        pictures.splice(pictures.begin(), pictures, picture.place);
    total += bytes - picture.counted_bytes;
    picture.counted_bytes = bytes;
    drop_excess();
}

void PictureCache::forget(FileMipMap& picture)
{
    if (picture.counted_bytes == 0)
        return;
    total -= picture.counted_bytes;
    picture.counted_bytes = 0;
    pictures.erase(picture.place);
}

void PictureCache::drop_excess()
{
    for (auto place = pictures.end(); place != pictures.begin() && total > limit;) {
        FileMipMap* picture = *--place;
        if (picture->locks > 0)
            continue;
        ++place;
        picture->drop();
    }
}

void FileMipMap::refresh(int colours)
{
    const FileStamp now = inq_stamp(path, colours);
    if (is_looked_at && now == stamp)
        return;
    is_looked_at = true;
    stamp = now;
    drop();
    PictureInfo info;
    KIVString error;
    if (inq_picture_info(path, info, error))
        set_size(info.width, info.height, info.x_dpi, info.y_dpi);
    else
        set_unusable(error);
}

gsl::owner<KIVPixmap*> FileMipMap::load_picture(KIVString& error)
{
    PictureInfo info;
    std::unique_ptr<KIVPixmap> picture(new_pixmap_from_file(path, bits, info, error));
    if (!picture)
        return nullptr;
    if (picture->inq_width() != width || picture->inq_height() != height)
        error = "Can't read image " + path + ": it has changed since it was looked at";
    else if (stamp.colours != 0 && !inq_colour_manager()->bring_to_output(*picture, info.profile))
        error = "Can't read image " + path + ": not enough memory";
    else
        return picture.release();
    return nullptr;
}
} // namespace

struct BitmapProvider::Contents {
    int bits;
    bool is_colour_managed;
    std::vector<std::unique_ptr<FileMipMap>> pictures; // by id; null once it is given back
    std::unordered_map<std::string, int> ids;

    FileMipMap* find(int id) const
    {
        const bool is_known = id >= 0 && static_cast<std::size_t>(id) < pictures.size();
        return is_known ? pictures[static_cast<std::size_t>(id)].get() : nullptr;
    }
    void delete_if_unused(int id)
    {
        const FileMipMap* picture = find(id);
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
        contents->pictures.push_back(std::make_unique<FileMipMap>(path, contents->bits));
    else
        hold_object_id(place->second);
    return place->second;
}

MipMap* BitmapProvider::lock(int id)
{
    FileMipMap* picture = contents->find(id);
    if (!picture)
        return nullptr;
    if (picture->locks++ == 0)
        picture->refresh(contents->is_colour_managed ? inq_colour_manager()->inq_output_revision()
                                                     : 0);
    return picture;
}

void BitmapProvider::unlock(int id)
{
    FileMipMap* picture = contents->find(id);
    if (!picture || picture->locks == 0)
        return;
    --picture->locks;
    inq_cache().note_use(*picture);
    contents->delete_if_unused(id);
}

void BitmapProvider::hold_object_id(int id)
{
    if (FileMipMap* picture = contents->find(id))
        ++picture->holds;
}

void BitmapProvider::delete_object_id(int id)
{
    FileMipMap* picture = contents->find(id);
    if (!picture || picture->holds == 0)
        return;
    if (--picture->holds == 0)
        contents->ids.erase(picture->path.str());
    contents->delete_if_unused(id);
}

void BitmapProvider::set_cache_limit(std::size_t bytes)
{
    inq_cache().limit = bytes;
    inq_cache().drop_excess();
}

std::size_t BitmapProvider::inq_cache_limit()
{
    return inq_cache().limit;
}

std::size_t BitmapProvider::inq_cached_bytes()
{
    return inq_cache().total;
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
