#pragma once

class KIVString;

/// Whether the file holds a whole frame of the size. Formats that can't be read here count by not
/// being empty: frames are never written in place.
bool is_finished_frame(const KIVString& file, int width, int height);
