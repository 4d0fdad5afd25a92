#include "compositor/lib/hdr/CNodeStatus.h"

KIVString CNodeStatus::inq_description() const
{
    return has_node ? "Rendering " + node_name : KIVString("Initialising");
}
