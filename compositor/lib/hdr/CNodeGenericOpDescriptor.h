#pragma once

#include "kivlib/hdr/StoredClass.h"

class CNode;
class CNodeOp;

using NewOpFunction = CNodeOp* (*)(CNode*);

/// Lets a node class process one more type of data, from outside. It enters itself with the node
/// repository; node class and generic may come in either order.
class CNodeGenericOpDescriptor : public ClassDescriptor {
    KIV_STORED(CNodeGenericOpDescriptor, ClassDescriptor);

public:
    CNodeGenericOpDescriptor(const char* class_name, const char* base_class_name,
                             KIVReadFunction reader, int version, ClassManager* manager,
                             const KIVString& node_type, int data_type, NewOpFunction new_op_fn);
    explicit CNodeGenericOpDescriptor(KIVIStream& stream);
    CNodeGenericOpDescriptor(const CNodeGenericOpDescriptor&) = delete;
    CNodeGenericOpDescriptor& operator=(const CNodeGenericOpDescriptor&) = delete;
    ~CNodeGenericOpDescriptor() override;

    void storer(KIVOStream& stream) override;
    void setup_func_refs_from(const ClassDescriptor* other) override;

    /// The class name of the node that it serves.
    const KIVString& inq_node_type() const { return node_type; }
    int inq_data_type() const { return data_type; }

    /// Null if its code can't be loaded; the caller deletes it.
    gsl::owner<CNodeOp*> inq_nodeop(CNode* node);

private:
    template <class Record> void record(Record& r);

    KIVString node_type;
    int data_type = 0;
    NewOpFunction new_op_fn = nullptr;
};
