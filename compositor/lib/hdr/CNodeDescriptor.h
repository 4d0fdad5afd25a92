#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

#include <vector>

class CNode;
class CNodeGenericOpDescriptor;
class CNodeGraph;

using NewNodeFunction = CNode* (*)(CNodeGraph*, bool*);

/// What the graph knows of a node class before any instance exists: its name for the user, its
/// place on the palette, its channels and their data types, and how an instance is made. It enters
/// itself with the node repository, which keeps it.
class CNodeDescriptor : public ClassDescriptor {
    KIV_STORED(CNodeDescriptor, ClassDescriptor);

public:
    /// All channels carry `type`.
    CNodeDescriptor(const char* class_name, const char* base_class_name, KIVReadFunction reader,
                    int version, ClassManager* manager, const char* user_type_name, int catagory,
                    bool hidden, int n_inputs, int n_outputs, int type,
                    NewNodeFunction new_node_fn);

    /// A type for each channel. The arrays are kept and not copied.
    CNodeDescriptor(const char* class_name, const char* base_class_name, KIVReadFunction reader,
                    int version, ClassManager* manager, const char* user_type_name, int catagory,
                    bool hidden, int n_inputs, int n_outputs, const int* input_types,
                    const int* output_types, NewNodeFunction new_node_fn);

    /// A node class whose code may not be loaded. The repository takes it at `did_load`.
    explicit CNodeDescriptor(KIVIStream& stream);
    CNodeDescriptor(const CNodeDescriptor&) = delete;
    CNodeDescriptor& operator=(const CNodeDescriptor&) = delete;
    ~CNodeDescriptor() override;

    void storer(KIVOStream& stream) override;
    void setup_func_refs_from(const ClassDescriptor* other) override;
    void did_load() override;

    const KIVString& inq_user_type_name() const { return user_type_name; }
    int inq_catagory_type() const { return catagory_type; }

    /// Not offered on the palette.
    bool inq_is_hidden() const { return is_hidden; }
    int inq_n_inputs() const { return n_inputs; }
    int inq_n_outputs() const { return n_outputs; }

    /// 0 out of range.
    int inq_input_type(int index) const;
    int inq_output_type(int index) const;

    /// Null if the class has none.
    KIVLinkedList* inq_generic_descriptors() const { return generics.get(); }

    /// A node with its channels, or null. `flag` may be null; the factory clears it.
    gsl::owner<CNode*> new_node(CNodeGraph* graph, bool* flag);

    void add_generic(CNodeGenericOpDescriptor* generic);
    void remove_generic(const CNodeGenericOpDescriptor* generic);

private:
    void enter(ClassManager* manager);
    void read_types(KIVIStream& stream);

    KIVString user_type_name;
    int catagory_type = 0;
    bool is_hidden = false;
    int n_inputs = 0;
    int n_outputs = 0;
    int type = 0; // of all channels; 0: they are listed one by one
    const int* input_types = nullptr;
    const int* output_types = nullptr;
    NewNodeFunction new_node_fn = nullptr;
    std::unique_ptr<KIVLinkedList> generics; // refers
    std::vector<int> read_lists;             // the types of a descriptor from a stream
};
