#pragma once

#include "scene/hdr/BaseSceneAsset.h"

/// A colour model. It never stands in a file of its own.
class ModelAsset : public BaseSceneAsset {
    KIV_STORED(ModelAsset, BaseSceneAsset);

public:
    using BaseSceneAsset::BaseSceneAsset;

    /// Complains.
    explicit ModelAsset(KIVIStream& stream);

    /// Complains and writes nothing.
    void storer(KIVOStream& stream) override;
    bool check_for_lost_file() override;
};
