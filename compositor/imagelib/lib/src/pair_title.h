#pragma once

#include "xsheet/column/hdr/SubColumn.h"
#include "xsheet/node/hdr/XSNode.h"

// The title of a transmitter and its receiver: the header text of the sub-column of each.

/// Empty without a sub-column.
inline KIVString title_of(const XSNode& node)
{
    const SubColumn* bearer = node.inq_subcolumn();
    const KIVString* text = bearer ? bearer->inq_header_text() : nullptr;
    return text ? *text : KIVString();
}

inline void set_title(const XSNode& node, const KIVString& title)
{
    SubColumn* bearer = node.inq_subcolumn();
    if (bearer && !(title_of(node) == title))
        bearer->set_header_text(title);
}
