#pragma once

#include "kivlib/hdr/KIVObject.h"

#include <memory>
#include <vector>

class CData;
class DAGOpChannel;
class DAGOpChannelIn;
class DAGOpChannelOut;
class KIVLinkedList;
class KIVString;

using NewDataFunction = CData* (*)();

/// A type of data that channels carry. It registers itself and lives to the end of the process.
class CDataDescriptor : public KIVObject {
public:
    /// The texts and `conversions`, which 0 ends, are kept and not copied.
    CDataDescriptor(const char* class_name, const char* user_type_name, int type,
                    NewDataFunction new_data_fn, bool can_union, const int* conversions,
                    bool can_order);

    /// All types in the order of their registration; null before the first.
    static const KIVLinkedList* inq_data_types_list();

    /// Null for a type that nobody registered; so is the datum.
    static CDataDescriptor* find_desc_for(const char* class_name);
    static CDataDescriptor* find_desc_for(int type);
    static gsl::owner<CData*> new_data(int type);

    const char* inq_class_name() const { return data_class_name; }
    const char* inq_user_type_name() const { return user_type_name; }
    int inq_type() const { return type; }

    /// Whether several inputs of this type can be composited.
    bool inq_can_union_data() const { return can_union; }

    /// Whether the order of several connections on one input means something.
    bool inq_can_order_data() const { return can_order; }

    /// Ended by 0; null if there are none. A list that was given stays valid.
    const int* inq_convertable_types() const { return conversions; }
    bool inq_can_convert_to(int wanted) const;

    gsl::owner<CData*> new_data() const { return new_data_fn(); }

    /// Data of this type can be converted to `to_type`, although the name says the reverse.
    void add_conversion_from(int to_type);

    /// The operator of the pass called `name` on an input or output channel of any type, or null;
    /// the caller deletes it.
    static gsl::owner<DAGOpChannelOut*> inq_td_dag_op(const KIVString& name, DAGOpChannel* channel);
    static gsl::owner<DAGOpChannelIn*> inq_bu_dag_op(const KIVString& name, DAGOpChannel* channel);

private:
    const char* data_class_name;
    const char* user_type_name;
    int type;
    NewDataFunction new_data_fn;
    bool can_union;
    bool can_order;
    const int* conversions;
    std::vector<std::unique_ptr<int[]>> grown_lists; // callers may hold on to older ones
};
