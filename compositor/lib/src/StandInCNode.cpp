#include "compositor/lib/hdr/StandInCNode.h"

#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/report_error.h"

StandInCNode::StandInCNode(CNodeDescriptor* desc) : desc(desc) {}

ClassDescriptor* StandInCNode::inq_class_descriptor() const
{
    return desc;
}

gsl::owner<CNodeOp*> StandInCNode::new_nodeop(int)
{
    report_here() << "Program error.\n";
    return nullptr;
}

ClassDescriptor* MacroStandInCNode::inq_class_descriptor() const
{
    return StandInCNode::inq_class_descriptor();
}

KIVString MacroStandInCNode::inq_displayed_name() const
{
    KIVString name = filename.get_file();
    name.set_extension("");
    return name;
}
