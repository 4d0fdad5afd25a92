#pragma once

#include "scene/hdr/BaseSceneAsset.h"

/// A sound. A scene keeps its sounds whether or not they are used.
class SoundAsset : public BaseSceneAsset {
    KIV_STORED(SoundAsset, BaseSceneAsset);

public:
    using BaseSceneAsset::BaseSceneAsset;

    void storer(KIVOStream& stream) override { BaseSceneAsset::storer(stream); }
};
