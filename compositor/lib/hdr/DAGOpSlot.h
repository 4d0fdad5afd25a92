#pragma once

#include "kivlib/hdr/Owned.h"

#include <memory>

/// The operator of a pass at one place of the graph: the place's own, or the default that all
/// places of the pass share.
template <class Op> class DAGOpSlot {
public:
    void set_own(gsl::owner<Op*> op)
    {
        own.reset(op);
        current = op;
    }
    void set_shared(Op* op)
    {
        own.reset();
        current = op;
    }

    /// The place's own operator, or else the shared one.
    void set(gsl::owner<Op*> op, Op* otherwise)
    {
        if (op)
            set_own(op);
        else
            set_shared(otherwise);
    }

    Op* get() const { return current; }
    void execute() const
    {
        if (current)
            current->execute();
    }

private:
    std::unique_ptr<Op> own;
    Op* current = nullptr; // `own`, or not owned
};
