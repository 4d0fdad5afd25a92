#include "xsheet/node/hdr/SubColPrefs.h"

KIV_STORED_CLASS(SubColPrefs, -1);
