#pragma once

#include "kivlib/hdr/StoredClass.h"

/// What a user keeps of a sub-column for new nodes: how it is shown. Each kind of sub-column that
/// has such settings derives its own.
class SubColPrefs : public KIVObject {
    KIV_STORED(SubColPrefs, KIVObject);

public:
    SubColPrefs() = default;
    explicit SubColPrefs(KIVIStream& stream) : KIVObject(stream) {}
};
