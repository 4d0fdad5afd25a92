#include "scene/hdr/RasterAsset.h"

#include "imagelib/hdr/BitmapProvider.h"

KIV_STORED_CLASS(RasterAsset, -1);

RasterAsset::RasterAsset(unsigned long tag, unsigned int type, const KIVFile& file)
    : BaseSceneAsset(tag, type, file)
{
    make_mipmap_ids();
}

RasterAsset::RasterAsset(KIVIStream& stream) : BaseSceneAsset(stream) {}

RasterAsset::~RasterAsset()
{
    release_mipmap_ids(mipmap_id_8, mipmap_id_16);
}

bool RasterAsset::check_for_lost_file()
{
    const bool flag = look_for_file("Replace lost image", "MISSING IMAGE FILE : ");
    const int old_id_8 = mipmap_id_8;
    const int old_id_16 = mipmap_id_16;
    make_mipmap_ids();
    release_mipmap_ids(old_id_8, old_id_16); // last, so that pictures of the same file stay
    return flag;
}

void RasterAsset::make_mipmap_ids()
{
    mipmap_id_8 = inq_bitmap_provider_8()->new_image_id(inq_kivfile());
    mipmap_id_16 = inq_bitmap_provider_16()->new_image_id(inq_kivfile());
}

void RasterAsset::release_mipmap_ids(int id_8, int id_16)
{
    if (id_8 >= 0)
        inq_bitmap_provider_8()->delete_object_id(id_8);
    if (id_16 >= 0)
        inq_bitmap_provider_16()->delete_object_id(id_16);
}
