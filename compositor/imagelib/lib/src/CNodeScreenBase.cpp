#include "compositor/imagelib/lib/hdr/CNodeScreenBase.h"

#include "compositor/imagelib/lib/hdr/CNodeScreenOp.h"

gsl::owner<CNodeOp*> CNodeScreenBase::new_nodeop(int)
{
    return new CNodeScreenOp(this);
}
