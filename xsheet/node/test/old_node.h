#pragma once

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/Vector.h"

/// The record of a node of `version` (92 or above) that has neither channels, group nor macro, up
/// to the label of its column.
inline void tell_old_node(KIVOStream& old, int version, unsigned long column_label)
{
    const Vector2 position;
    if (version >= 146)
        old << 50.0;
    old << 0;
    old.insert_with_class_hdr(nullptr);
    old.insert_with_class_hdr(nullptr);
    old.insert_without_class_hdr(&position);
    if (version >= 102)
        (old << 0 << 0).insert_with_class_hdr(nullptr);
    if (version >= 144)
        old.insert_with_class_hdr(nullptr);
    old << 0.0 << column_label;
}
