#pragma once

#include "scene/hdr/BaseSceneAsset.h"

/// A level of drawings. Whether its registration may be edited is a setting of the user, not of
/// the scene.
class LevelAsset : public BaseSceneAsset {
    KIV_STORED(LevelAsset, BaseSceneAsset);

public:
    LevelAsset(unsigned long tag, unsigned int type, const KIVFile& file);
    explicit LevelAsset(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    bool check_for_lost_file() override;

    bool inq_registration_editable() const { return registration_editable; }
    void set_registration_editable(bool editable) { registration_editable = editable; }

private:
    bool registration_editable;
};
