#pragma once

#include "compositor/lib/hdr/OpMemory.h"
#include "kivlib/hdr/IntArray.h"

#include <memory>
#include <vector>

class AbortPanel;
class CData;
class CNodeOp;
class CNodeOpArraySet;

/// The ops that feed one input channel, one for each connection, in compositing order. With more
/// than one, their data are merged in data of the array's own.
class CNodeOpArray : public KIVObject {
public:
    /// `n` empty places; `type` is the data type of the channel.
    CNodeOpArray(int n, int type, bool selected);
    ~CNodeOpArray() override;

    using KIVObject::operator new;
    static void* operator new(std::size_t size) { return OpMemory::allocate(size); }

    int inq_n_nodes() const { return n_nodes; }
    int inq_n_connections() const { return n_nodes; }
    bool inq_is_selected() const { return is_selected; }
    CNodeOpArraySet* inq_parent() const { return parent; }
    void set_parent(CNodeOpArraySet* of_channel) { parent = of_channel; }

    /// Null out of range.
    CNodeOp* inq_node_op(int i) const;
    CNodeOp* inq_nodeop(int i) const { return inq_node_op(i); }
    void set_nodeop(int i, CNodeOp* op);

    /// What the channel receives: the data of the only op, or the merged data; null without either.
    CData* inq_data() const;

    /// The output of op `i`; null if there is none.
    CData* inq_data(int i) const;

    /// Whether one of the ops has promised to cover all that is asked of the channel. Lasts until
    /// the data are reset.
    bool inq_has_cover() const { return has_cover; }
    void set_has_cover(bool covers) { has_cover = covers; }

    void update_request_data();
    void auto_union_immediate_data(AbortPanel* abort);
    void auto_union_generated_data(AbortPanel* abort);
    void auto_union_change_data();
    void clear_union_data();
    void reset_union_data();

    /// Changes the compositing order: place `i` takes the op at `new_order[i]`, counted from the
    /// order in which the connections stand. `forget` counts from the order of now instead.
    void reorder(const IntArray* new_order, bool forget);

private:
    using Ops = std::vector<CNodeOp*, OpAllocator<CNodeOp*>>;
    using Places = std::vector<int, OpAllocator<int>>;

    bool inq_is_permutation(const IntArray& places) const;
    bool inq_is_order(const IntArray& places) const;
    void undo_order();

    int n_nodes;
    Ops nodes;                         // not owned
    CNodeOpArraySet* parent = nullptr; // not owned
    std::unique_ptr<CData> union_data;
    bool is_selected;
    Places order; // the permutation last applied; empty before the first
    bool has_cover = false;
};
