#pragma once

#include "kivlib/hdr/StoredClass.h"

/// Base of the records that bind a data type to a node class.
class CNodeGenericOp : public KIVObject {
    KIV_STORED_ABSTRACT(CNodeGenericOp, KIVObject);

public:
    void storer(KIVOStream& stream) override;

    const KIVString& inq_node_type() const { return node_type; }
    int inq_data_type() const { return data_type; }

protected:
    CNodeGenericOp(const KIVString& node_type, int data_type)
        : node_type(node_type), data_type(data_type)
    {}
    explicit CNodeGenericOp(KIVIStream& stream);

private:
    template <class Record> void record(Record& r);

    KIVString node_type;
    int data_type = 0;
};
