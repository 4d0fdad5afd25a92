#pragma once

#include "kivlib/hdr/StoredClass.h"

#include <vector>

/// The descriptors of the classes that something uses, such as the node classes of a scene, each
/// once and in the order of their first use.
class KIVDLLUsageList : public KIVObject {
    KIV_STORED(KIVDLLUsageList, KIVObject);

public:
    KIVDLLUsageList() = default;

    /// Descriptors that come in are given to the class manager.
    explicit KIVDLLUsageList(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void record_object_usage(const KIVObject* object);
    const std::vector<ClassDescriptor*>& inq_descriptors() const { return descriptors; }

private:
    std::vector<ClassDescriptor*> descriptors; // not owned
};
