#pragma once

#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"

/// An op under a walk, and how many of its inputs the walk has met.
struct OpVisit {
    /// The next op that feeds this one, channel by channel; null when there are no more.
    CNodeOp* next_input(bool last_connection_first = false)
    {
        for (; channel < op->inq_n_inputs(); ++channel, met = 0) {
            const CNodeOpArray* array = op->inq_inputs(channel);
            const int n = array ? array->inq_n_nodes() : 0;
            while (met < n) {
                const int i = last_connection_first ? n - 1 - met : met;
                ++met;
                if (CNodeOp* input = array->inq_node_op(i))
                    return input;
            }
        }
        return nullptr;
    }

    CNodeOp* op;
    int channel = 0;
    int met = 0;
};
