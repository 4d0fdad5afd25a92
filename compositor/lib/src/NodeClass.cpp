#include "compositor/lib/hdr/NodeClass.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

namespace {
/// A file may have brought another kind of record in under the name.
bool is_node_record(const ClassDescriptor* record)
{
    return record && record->inq_class_descriptor() == CNodeDescriptor::inq_class_descriptor_s();
}
} // namespace

void NodeInitialiser::add_nodes(const NodeFamily& family, std::span<const NodeRow> rows)
{
    for (const NodeRow& row : rows) {
        ClassDescriptor* found = ClassManager::inq_main()->find_cd_for(row.class_name);
        if (found && !found->inq_is_from_stream()) {
            report_here() << "The node class " << row.class_name << " is there already.\n";
            if (is_node_record(found))
                row.set_descriptor(found);
            continue;
        }
        auto* own =
            new CNodeDescriptor(row.class_name, row.base_name, row.reader, row.version, nullptr,
                                row.user_type_name, family.catagory, row.palette == Palette::HIDDEN,
                                family.n_inputs, family.n_outputs, family.type, row.new_node);
        own->set_stored_type(row.type);
        add(own);
        row.set_descriptor(is_node_record(found) ? found : own);
    }
}
