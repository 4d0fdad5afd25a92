#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/ObjectProvider.h"

#include <cstddef>
#include <memory>

class MipMap;

/// Pictures of files at one depth, by id. A file is looked at when its id is locked and read when
/// its pixels are asked for. The pixels of unlocked pictures stay in memory while all providers
/// together keep below their limit; those unused for longest go first. A file that has changed on
/// disc is read anew.
class BitmapProvider : public ObjectProvider {
public:
    /// `bits` per sample of the pictures given out.
    explicit BitmapProvider(int bits);
    ~BitmapProvider() override;
    BitmapProvider(const BitmapProvider&) = delete;
    BitmapProvider& operator=(const BitmapProvider&) = delete;

    /// An id for the file, from 0, with one hold on it. A file has one id: asked again, it has a
    /// hold more. Nothing is read. Without memory it throws, as `new` does, and nothing has
    /// changed.
    int new_image_id(const KIVString& file);

    /// The file of the id, from the root; empty for an id that is not given out.
    KIVString inq_file(int id) const;

    /// The picture of the id, usable or not; null for an id that is not given out. It lives until
    /// the matching unlock. What could not be read for a reason outside the file is tried again by
    /// the next lock of an unlocked picture.
    MipMap* lock(int id);

    /// Why the picture could not be read at some time since `forget_loss`, for a reason outside the
    /// file, even if it could be later on; empty if that was never so, and for an id that is not
    /// given out. Nothing is read.
    KIVString inq_loss(int id) const;
    void forget_loss(int id);

    void unlock(int id) override;
    void hold_object_id(int id) override;
    void delete_object_id(int id) override;

    /// Bytes of pixels that are kept for pictures nobody has locked, for all providers together.
    static void set_cache_limit(std::size_t bytes);
    static std::size_t inq_cache_limit();
    static std::size_t inq_cached_bytes();

private:
    friend class CMSBitmapProvider;
    struct Contents;
    const std::unique_ptr<Contents> contents;
};

class BitmapProvider_8 : public BitmapProvider {
public:
    BitmapProvider_8() : BitmapProvider(8) {}
};

class BitmapProvider_16 : public BitmapProvider {
public:
    BitmapProvider_16() : BitmapProvider(16) {}
};

/// Those of the process.
BitmapProvider_8* inq_bitmap_provider_8();
BitmapProvider_16* inq_bitmap_provider_16();
