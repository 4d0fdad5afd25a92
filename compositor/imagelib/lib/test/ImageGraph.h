#pragma once

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "compositor/lib/hdr/GraphExec.h"
#include "tests/support/OldRecord.h"
#include "xsheet/column/hdr/XSheet.h"

#include <cmath>
#include <memory>

/// An empty sheet and a graph with its output node.
class ImageGraph {
public:
    ImageGraph() { graph.set_root_node(output); }

    template <class Node> Node* add(Node* node)
    {
        node->init();
        node->add_to_graph(&graph);
        return node;
    }

    /// Connects below what is connected already.
    void connect(CNode* from, CNode* to)
    {
        constexpr int BEHIND_ALL = 1 << 20;
        graph.make_connection(from->inq_outputs()->inq_channel(0), BEHIND_ALL,
                              to->inq_inputs()->inq_channel(0), BEHIND_ALL, false);
    }

    /// What covers a frame of the output, with its middle at (0, 0); may be null.
    std::unique_ptr<KIVPixmap> render(int width, int height, int frame = 1)
    {
        Matrix44 to_view;
        to_view.set_translation({width / 2.0, height / 2.0, 0.0});
        GraphExec exec(CDataImage::inq_type_s(), output, 0);
        auto* image = static_cast<CDataImage*>(exec.inq_root_data());
        image->set_request_data(frame, true, false, 0, to_view,
                                IntBBox(IntRect(height, 0, 0, width)));
        exec.setup_data();
        exec.generate_data(nullptr);
        return std::unique_ptr<KIVPixmap>(image->extract_pixmap());
    }

    XSheet sheet{nullptr};
    CNodeGraph graph{&sheet};
    CNodeRostrum* output = add(new CNodeRostrum);
};

/// Tells the part of an old record that all nodes with a column have.
inline void tell_old_node(OldRecord& record, int version)
{
    const auto put_nulls = [&](int n) {
        for (; n > 0; --n)
            record.insert_with_class_hdr(nullptr);
    };
    record << 0;                     // disabled
    put_nulls(version < 92 ? 3 : 2); // graph, inputs, outputs
    record << 0.0 << 0.0;            // position
    if (version >= 102) {
        record << 0 << 0;                 // hidden, collapsed
        put_nulls(version < 144 ? 1 : 2); // group, macro
    }
    record << 0.0; // tag position
    record << 0L;  // column label
    if (version >= 111)
        record << 0;
}
