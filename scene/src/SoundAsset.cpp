#include "scene/hdr/SoundAsset.h"

KIV_STORED_CLASS(SoundAsset, -1);
