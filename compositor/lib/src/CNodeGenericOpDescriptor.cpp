#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"

#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/report_error.h"

KIV_STORED_CLASS(CNodeGenericOpDescriptor, 120);

CNodeGenericOpDescriptor::CNodeGenericOpDescriptor(
    const char* class_name, const char* base_class_name, KIVReadFunction reader, int version,
    ClassManager* manager, const KIVString& node_type, int data_type, NewOpFunction new_op_fn)
    : ClassDescriptor(class_name, base_class_name, reader, version, nullptr), node_type(node_type),
      data_type(data_type), new_op_fn(new_op_fn)
{
    if (manager)
        manager->enter(this);
    CNodeRepository::inq_repository()->add_generic(this);
}

template <class Record> void CNodeGenericOpDescriptor::record(Record& r)
{
    r.value(data_type);
    r.value(node_type);
}

CNodeGenericOpDescriptor::CNodeGenericOpDescriptor(KIVIStream& stream) : ClassDescriptor(stream)
{
    RecordReader r(stream);
    record(r);
    if (stream.inq_error_state() == KIVStream::OKAY)
        CNodeRepository::inq_repository()->add_generic(this);
}

CNodeGenericOpDescriptor::~CNodeGenericOpDescriptor()
{
    CNodeRepository::inq_repository()->remove_generic(this);
}

void CNodeGenericOpDescriptor::storer(KIVOStream& stream)
{
    ClassDescriptor::storer(stream);
    RecordWriter r(stream);
    record(r);
}

void CNodeGenericOpDescriptor::setup_func_refs_from(const ClassDescriptor* other)
{
    ClassDescriptor::setup_func_refs_from(other);
    if (other->inq_class_descriptor() == inq_class_descriptor())
        new_op_fn = static_cast<const CNodeGenericOpDescriptor*>(other)->new_op_fn;
}

gsl::owner<CNodeOp*> CNodeGenericOpDescriptor::inq_nodeop(CNode* node)
{
    if (!new_op_fn)
        load_dll();
    if (new_op_fn)
        return new_op_fn(node);
    report_here() << "Can not make new node (null function): " << inq_name() << ".\n";
    return nullptr;
}
