#pragma once

#include "kivlib/hdr/StoredClass.h"

/// `object`, which may be null, as a `Wanted`; null if it is none. Not for an object that is being
/// read.
template <class Wanted> Wanted* object_cast(KIVObject* object)
{
    const ClassDescriptor* record = object ? object->inq_class_descriptor() : nullptr;
    const StoredType* type = record ? record->inq_stored_type() : nullptr;
    return type && type->is_a(stored::type_of<Wanted>) ? static_cast<Wanted*>(object) : nullptr;
}
