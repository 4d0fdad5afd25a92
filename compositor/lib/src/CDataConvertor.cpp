#include "compositor/lib/hdr/CDataConvertor.h"

#include "compositor/lib/hdr/CNodeRepository.h"

CDataConvertorDescriptor::CDataConvertorDescriptor(int from_type, int to_type)
    : from_type(from_type), to_type(to_type)
{
    CNodeRepository::inq_repository()->add_convertor(this);
}
