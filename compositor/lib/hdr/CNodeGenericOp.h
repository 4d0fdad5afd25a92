#pragma once

#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/StoredClass.h"

/// A type of processing that a module attaches to a node class from outside.
class CNodeGenericOp : public KIVObject {
    KIV_STORED_ABSTRACT(CNodeGenericOp, KIVObject);

public:
    CNodeGenericOp(const KIVString& node_type, int data_type)
        : node_type(node_type), data_type(data_type)
    {}
    explicit CNodeGenericOp(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    /// The class name of the node it serves.
    const KIVString& inq_node_type() const { return node_type; }
    int inq_data_type() const { return data_type; }

private:
    template <class Record> void record(Record& r);

    KIVString node_type;
    int data_type;
};
