#pragma once

#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/MipMap.h"

/// An image of the provider of one depth for as long as it is looked at.
class LockedMipMap {
public:
    LockedMipMap(int bits, int id) : provider(inq_provider(bits)), id(id), image(provider->lock(id))
    {}
    LockedMipMap(const LockedMipMap&) = delete;
    LockedMipMap& operator=(const LockedMipMap&) = delete;
    ~LockedMipMap() { provider->unlock(id); }

    bool is_usable() const { return image && image->usable; }

    /// Null for an unknown id.
    MipMap* inq_mip_map() const { return image; }
    MipMap* operator->() const { return image; }

    static BitmapProvider* inq_provider(int bits)
    {
        if (bits == 8)
            return inq_bitmap_provider_8();
        return inq_bitmap_provider_16();
    }

private:
    BitmapProvider* provider; // not owned
    int id;
    MipMap* image; // the provider's
};
