#pragma once

/// What the frames between a key and the next one show.
enum InterpMode : int {
    IM_INBETWEEN = 0, // cells made between the two keys
    IM_HOLD = 1,      // the key itself
    IM_STOP = 2       // nothing
};
