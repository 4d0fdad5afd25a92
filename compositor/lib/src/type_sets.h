#pragma once

#include "compositor/lib/hdr/cdata_tDArray.h"

class CNode;
class CNodeDescriptor;

/// The operations of a type check on sets of data types. The order within a set is kept, and a
/// type may stand in it more than once.
void intersect_types(cdata_tDArray& a, const cdata_tDArray& b);
void keep_compositable_types(cdata_tDArray& types);

/// Adds behind each type what it converts to, and what that converts to in turn.
void expand_by_conversions(cdata_tDArray& types);
void remove_wildcards(cdata_tDArray& types);

/// Whether a channel of `type` can read one of `offered`.
bool inq_fits(const cdata_tDArray& offered, int type);

cdata_tDArray all_registered_types();
cdata_tDArray generic_types_of(const CNodeDescriptor* descriptor);

/// Leaves a copy on the node. A list that says the same already stays.
void store_types(CNode& node, const cdata_tDArray& types);
