#pragma once

#include "frontend/montaray_scene/Description.h"
#include "kivlib/hdr/Vector.h"
#include "xsheet/cell/hdr/InterpMode.h"

class KeyCell;

// What the descriptions of all kinds of keys have in common.

/// Numbers as a column of `count` has them, with their places: one alone may stand without array.
std::vector<Place> inq_numbers(const Place& place, int count);
Vector2 inq_point(const Place& place);

void set_values(const Place& place, int count, KeyCell& key);

/// Where another key follows.
void set_ease(const Place& place, KeyCell& key);

/// How the key leads on: by `mode` if nothing is told.
void set_interpolation(const Place& place, KeyCell& key, InterpMode mode);
