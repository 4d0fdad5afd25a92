#pragma once

#include "compositor/lib/hdr/OpMemory.h"
#include "kivlib/hdr/KIVObject.h"

#include <memory>
#include <vector>

class AbortPanel;
class CData;
class CNodeOp;
class CNodeOpArray;

/// The inputs of an op: an array of ops for each input channel.
class CNodeOpArraySet : public KIVObject {
public:
    CNodeOpArraySet(CNodeOp* node, int n_channels);
    ~CNodeOpArraySet() override;

    using KIVObject::operator new;
    static void* operator new(std::size_t size) { return OpMemory::allocate(size); }

    int inq_n_channels() const { return n_channels; }
    CNodeOp* inq_node() const { return node; }

    /// Null out of range.
    CNodeOpArray* inq_nodeop_array(int i) const;
    void set_nodeop_array(int i, gsl::owner<CNodeOpArray*> array);

    /// 0 out of range.
    int inq_n_connections(int channel) const;

    /// The output of the op at `connection` of `channel`; null if there is none.
    CData* inq_data(int channel, int connection) const;

    void copy_request_data_from(CData* data);
    void update_request_data();
    void auto_union_immediate_data(AbortPanel* abort);
    void auto_union_generated_data(AbortPanel* abort);
    void auto_union_change_data();
    void reset_union_data();

private:
    using Array = std::unique_ptr<CNodeOpArray>;

    int n_channels;
    std::vector<Array, OpAllocator<Array>> arrays;
    CNodeOp* node; // not owned
};
