#pragma once

#include "frontend/montaray_scene/Description.h"

class CNodeDescriptor;

/// The class of a node's `class` or `type`, from the library or a module. Throws a `Mistake` if
/// there is none.
CNodeDescriptor& find_node_class(const Place& node);
