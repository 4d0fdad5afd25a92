#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "xsheet/column/hdr/XSheet.h"

#include <string>
#include <vector>

/// A new node of a class of the family, also of those that the user can't make.
gsl::owner<CNodeAffineTransform*> new_affine_node(const std::string& class_name);

/// Whether a node's record of `version` reads well with `n` more numbers behind its bases' part.
bool reads_with_numbers(const char* class_name, int version, int n);

/// "6 Move, 3 Angle": label and title of each sub-column.
std::string columns_of(const XSNode& node);

/// A node of a file of version 94, met again with these sub-columns, which have their labels.
class OldNode {
public:
    OldNode(const char* class_name, int n_numbers, const std::vector<SubColumn*>& sub_columns);

    template <class Node> Node* as() const { return static_cast<Node*>(node); }

    XSheet sheet{nullptr};
    CNodeGraph graph{&sheet};
    CNodeAffineTransform* node; // the graph's
};

/// A sub-column as it comes out of a file: it has its label.
template <class Kind> gsl::owner<Kind*> labelled(unsigned label, gsl::owner<Kind*> sub_column)
{
    sub_column->set_label(label);
    return sub_column;
}
