#include "compositor/lib/hdr/CData.h"

#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "kivlib/hdr/IntArray.h"
#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

namespace {
/// A type that says its inputs can be united has to say how.
void report_missing_union(gsl::owner<IntArray*> order = nullptr)
{
    const std::unique_ptr<IntArray> taken(order);
    report_here() << "Program error.\n";
}
} // namespace

gsl::owner<IntArray*> CData::sort_input_order(CNodeOpArray* inputs)
{
    auto order = std::make_unique<IntArray>();
    for (int i = inputs->inq_n_nodes() - 1; i >= 0; --i)
        order->add(i);
    return order.release();
}

void CData::union_immediate_data_from(CNodeOpArray*, AbortPanel*, gsl::owner<IntArray*> order)
{
    report_missing_union(order);
}

void CData::union_immediate_data_from(CData*, AbortPanel*)
{
    report_missing_union();
}

void CData::union_immediate_data_from(CNodeOpArray*, AbortPanel*)
{
    report_missing_union();
}

void CData::union_generated_data_from(CNodeOpArray*, AbortPanel*, gsl::owner<IntArray*> order)
{
    report_missing_union(order);
}

void CData::union_generated_data_from(CData*, AbortPanel*)
{
    report_missing_union();
}

void CData::union_generated_data_from(CNodeOpArray*, AbortPanel*)
{
    report_missing_union();
}

void CData::union_change_data_from(CNodeOpArray*, gsl::owner<IntArray*> order)
{
    report_missing_union(order);
}

void CData::union_change_data_from(CData*)
{
    report_missing_union();
}

void CData::union_change_data_from(CNodeOpArray*)
{
    report_missing_union();
}

void CData::copy_request_data_from(CData*) {}

void CData::copy_immediate_data_to(CData*) {}

void CData::copy_generated_data_to(CData*, AbortPanel*) {}

void CData::copy_change_data_to(CData*) {}

void CData::clear_immediate_data() {}

void CData::clear_generated_data() {}

void CData::clear_change_data() {}

void CData::delete_cache() {}

void CData::reset_data()
{
    clear_immediate_data();
    clear_generated_data();
}

bool CData::inq_request_equals(const CData*) const
{
    return false;
}

bool CData::inq_can_union_data() const
{
    return inq_desc()->inq_can_union_data();
}

bool CData::inq_can_convert_to(int type) const
{
    return inq_desc()->inq_can_convert_to(type);
}

const int* CData::inq_convertable_types() const
{
    return inq_desc()->inq_convertable_types();
}
