#pragma once

#include "imagelib/hdr/MipMap.h"

class KIVStringSet;

/// A picture that is stored in tiles and delivers parts of itself.
class TiledMipMap : public MipMap {
public:
    bool inq_tiled() const override { return true; }

    /// The extensions of the tiled formats that can be read.
    static KIVStringSet inq_tiled_extensions();

protected:
    TiledMipMap() = default;
};
