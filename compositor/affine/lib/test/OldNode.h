#pragma once

#include "compositor/affine/lib/hdr/CNodeAffineTransform.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/NodeClass.h"
#include "tests/support/OldRecord.h"
#include "xsheet/column/hdr/XSheet.h"

#include <initializer_list>
#include <memory>
#include <string>

/// The nodes that no palette of this library offers, for their old files.
void register_hidden_nodes();

/// Whether a node's record of `version` reads well with `n` more numbers behind its bases' part.
bool reads_with_numbers(const char* class_name, int version, int n);

/// A node of an old file, met again with these sub-columns in its sheet, which carry their labels.
class OldNode {
public:
    OldNode(const char* class_name, int n_numbers, std::initializer_list<SubColumn*> sub_columns);

    template <class Node> Node* as() const { return static_cast<Node*>(node); }

    /// "6 Move" for each sub-column that the node has now.
    std::string inq_columns() const;

    XSheet sheet{nullptr};
    CNodeGraph graph{&sheet};
    CNodeAffineTransform* node; // the graph's
    bool load_result;
};

/// "6 Move, 3 Angle": label and title of each sub-column.
std::string columns_of(const XSNode& node);

/// A sub-column as it comes out of a file: it has its label.
template <class Kind> gsl::owner<Kind*> labelled(unsigned label, gsl::owner<Kind*> sub_column)
{
    sub_column->set_label(label);
    return sub_column;
}
