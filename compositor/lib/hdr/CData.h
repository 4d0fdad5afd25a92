#pragma once

#include "compositor/lib/hdr/OpMemory.h"
#include "kivlib/hdr/KIVObject.h"

class AbortPanel;
class CDataDescriptor;
class CNodeOpArray;
class IntArray;

/// What flows along a connection of the graph: a request towards the sources, then facts and
/// finished data back towards the root. A type whose inputs can be united overrides the unions.
class CData : public KIVObject {
public:
    using KIVObject::operator new;
    static void* operator new(std::size_t size) { return OpMemory::allocate(size); }

    virtual CDataDescriptor* inq_desc() const = 0;
    virtual int inq_type() const = 0;

    /// The order in which the inputs are combined; the caller deletes it. The last input comes
    /// first.
    virtual gsl::owner<IntArray*> sort_input_order(CNodeOpArray* inputs);

    /// The forms with an order take it over.
    virtual void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                           gsl::owner<IntArray*> order);
    virtual void union_immediate_data_from(CData* input, AbortPanel* abort);
    virtual void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel* abort);
    virtual void union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort,
                                           gsl::owner<IntArray*> order);
    virtual void union_generated_data_from(CData* input, AbortPanel* abort);
    virtual void union_generated_data_from(CNodeOpArray* inputs, AbortPanel* abort);
    virtual void union_change_data_from(CNodeOpArray* inputs, gsl::owner<IntArray*> order);
    virtual void union_change_data_from(CData* input);
    virtual void union_change_data_from(CNodeOpArray* inputs);
    virtual void copy_request_data_from(CData* consumer);
    virtual void copy_immediate_data_to(CData* consumer);
    virtual void copy_generated_data_to(CData* consumer, AbortPanel* abort);
    virtual void copy_change_data_to(CData* consumer);
    virtual void clear_immediate_data();
    virtual void clear_generated_data();
    virtual void clear_change_data();
    virtual void delete_cache();

    /// The frame that the datum was requested for.
    virtual int inq_frameno() const = 0;
    virtual void reset_data();

    /// Whether an op would give the same answer to the request of `other`, which has the datum's
    /// type. Data that can't tell equal nothing, not even themselves. A class that adds to the
    /// request of its base has to override it.
    virtual bool inq_request_equals(const CData* other) const;

    bool inq_cache_enabled() const { return cache_enabled; }
    void set_cache_enabled(bool enabled) { cache_enabled = enabled; }

    bool inq_can_union_data() const;
    bool inq_can_convert_to(int type) const;

    /// Ended by 0; null if there are none.
    const int* inq_convertable_types() const;

private:
    bool cache_enabled = false;
};
