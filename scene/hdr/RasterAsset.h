#pragma once

#include "scene/hdr/BaseSceneAsset.h"

/// An image, which both bitmap providers know by an id as long as the asset lives.
class RasterAsset : public BaseSceneAsset {
    KIV_STORED(RasterAsset, BaseSceneAsset);

public:
    RasterAsset(unsigned long tag, unsigned int type, const KIVFile& file);

    /// Has no ids until `check_for_lost_file`.
    explicit RasterAsset(KIVIStream& stream);
    RasterAsset(const RasterAsset&) = delete;
    RasterAsset& operator=(const RasterAsset&) = delete;
    ~RasterAsset() override;

    void storer(KIVOStream& stream) override { BaseSceneAsset::storer(stream); }

    /// Gets new ids, whether or not the file moved.
    bool check_for_lost_file() override;

    /// With 8 and with 16 bits per sample; -1 for none.
    int inq_mipmap_id_8() const { return mipmap_id_8; }
    int inq_mipmap_id_16() const { return mipmap_id_16; }

private:
    void make_mipmap_ids();
    static void release_mipmap_ids(int id_8, int id_16);

    int mipmap_id_8 = -1;
    int mipmap_id_16 = -1;
};
