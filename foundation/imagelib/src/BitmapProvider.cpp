#include "imagelib/hdr/BitmapProvider.h"

#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/PixmapReader.h"
#include "imagelib/hdr/TiledMipMap.h"
#include "imagelib/src/HeldItems.h"
#include "imagelib/src/PixelCache.h"
#include "imagelib/src/PyramidFile.h"
#include "imagelib/src/want_of_memory.h"
#include "kivlib/hdr/file_operations.h"

#include <cerrno>
#include <new>
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
    using MipMap::set_without_memory;

    void drop_pixels() override { forget_copies(); }

private:
    gsl::owner<KIVPixmap*> load_copy(std::size_t level, RowFollower& follower, KIVString& error,
                                     bool& may_pass) override;
    void note_growth() override { inq_pixel_cache().note_use(item); }

    const KIVString path;
    const int bits;
    bool is_for_output = false; // and so brought to the output profile
    PixelCache::Item& item;
};

/// Nobody follows pixels that are still to be brought to the output profile.
gsl::owner<KIVPixmap*> FileMipMap::load_copy(std::size_t /*level*/, RowFollower& follower,
                                             KIVString& error, bool& may_pass)
{
    PictureInfo info;
    std::unique_ptr<KIVPixmap> picture(new_pixmap_from_file(
        path, bits, info, error, is_for_output ? nullptr : &follower, &may_pass));
    if (!picture)
        return nullptr;
    if (picture->inq_width() != width || picture->inq_height() != height) {
        error = "Can't read image " + path + ": it has changed since it was looked at";
        return nullptr;
    }
    if (is_for_output && !inq_colour_manager()->bring_to_output(*picture, info.profile))
        throw std::bad_alloc();
    return picture.release();
}

/// The picture of a file, as a provider keeps it.
class KeptPicture : public PixelCache::Item {
public:
    KeptPicture(const KIVString& path, int bits) : path(path), bits(bits), whole(path, bits, *this)
    {}

    MipMap* inq_mip() { return tiled ? static_cast<MipMap*>(tiled.get()) : &whole; }
    const MipMap* inq_mip() const { return const_cast<KeptPicture*>(this)->inq_mip(); }

    /// Looks at the file if it has changed since, if other colours are wanted, or if it could not
    /// be read for a reason that may have passed.
    void refresh(int colours);

    const KIVString& inq_loss() const
    {
        return inq_mip()->may_be_usable_later ? inq_mip()->inq_error_msg() : loss;
    }
    void forget_loss();

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
    void look(int colours);
    TiledMipMap::Change make_change(const PictureInfo& info, int colours) const;

    const int bits;
    bool is_looked_at = false;
    FileStamp stamp;
    KIVString loss; // of a picture that has been looked at anew since
    FileMipMap whole;
    std::unique_ptr<TiledMipMap> tiled; // null unless the file is; then this is the picture
};

/// How pixels are brought to the output profile, if they are at all.
TiledMipMap::Change KeptPicture::make_change(const PictureInfo& info, int colours) const
{
    if (colours == 0)
        return nullptr;
    return [profile = info.profile](KIVPixmap& pixels) {
        return inq_colour_manager()->bring_to_output(pixels, profile);
    };
}

void KeptPicture::refresh(int colours)
{
    const FileStamp now = inq_stamp(path, colours);
    if (is_looked_at && now == stamp && !inq_mip()->may_be_usable_later)
        return;
    try {
        if (inq_mip()->may_be_usable_later)
            loss = inq_mip()->inq_error_msg();
        drop();
        tiled.reset();
        look(colours);
    } catch (const std::bad_alloc&) {
        tiled.reset();
        whole.set_without_memory();
    }
    stamp = now;
    is_looked_at = true;
}

void KeptPicture::look(int colours)
{
    PictureInfo info;
    KIVString error;
    bool may_pass = false;
    if (!inq_picture_info(path, info, error, &may_pass))
        return whole.set_unusable(error, may_pass);
    whole.set_head(info, colours != 0);
    errno = 0;
    if (auto file = info.is_tiled ? PyramidFile::open(path, error) : nullptr)
        tiled =
            std::make_unique<TiledMipMap>(std::move(file), info, bits, make_change(info, colours),
                                          [this] { inq_pixel_cache().note_use(*this); });
    if (!error.is_null())
        whole.set_unusable(error, has_failed_for_now());
}

/// An unusable picture has to be looked at anew before it counts as lost again.
void KeptPicture::forget_loss()
{
    loss = KIVString();
    if (!inq_mip()->may_be_usable_later)
        return;
    inq_mip()->may_be_usable_later = false;
    is_looked_at = false;
}
} // namespace

struct BitmapProvider::Contents {
    int bits;
    bool is_colour_managed;
    HeldItems<KeptPicture> pictures;
};

BitmapProvider::BitmapProvider(int bits) : contents(new Contents{bits, false, {}}) {}
BitmapProvider::~BitmapProvider() = default;

int BitmapProvider::new_image_id(const KIVString& file)
{
    return contents->pictures.hold_path(inq_absolute_path(file), contents->bits);
}

KIVString BitmapProvider::inq_file(int id) const
{
    const KeptPicture* picture = contents->pictures.find(id);
    return picture ? picture->path : KIVString();
}

MipMap* BitmapProvider::lock(int id)
{
    KeptPicture* picture = contents->pictures.find(id);
    if (!picture)
        return nullptr;
    if (picture->locks == 0)
        picture->refresh(contents->is_colour_managed ? inq_colour_manager()->inq_output_revision()
                                                     : 0);
    ++picture->locks;
    return picture->inq_mip();
}

KIVString BitmapProvider::inq_loss(int id) const
{
    const KeptPicture* picture = contents->pictures.find(id);
    return picture ? picture->inq_loss() : KIVString();
}

void BitmapProvider::forget_loss(int id)
{
    if (KeptPicture* picture = contents->pictures.find(id))
        picture->forget_loss();
}

void BitmapProvider::unlock(int id)
{
    contents->pictures.unlock(id,
                              [](KeptPicture& picture) { inq_pixel_cache().note_use(picture); });
}

void BitmapProvider::hold_object_id(int id)
{
    contents->pictures.hold(id);
}

void BitmapProvider::delete_object_id(int id)
{
    contents->pictures.let_go(id);
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
