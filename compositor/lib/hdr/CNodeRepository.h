#pragma once

#include "kivlib/hdr/KIVLinkedList.h"

class CDataConvertorDescriptor;
class CDataDescriptor;
class CNodeDescriptor;
class CNodeGenericOpDescriptor;

/// All that modules have registered for the graph: node classes, data types, conversions, and
/// generic ops that wait for their node class. It keeps them to the end of the process.
class CNodeRepository {
public:
    static CNodeRepository* inq_repository();

    CNodeRepository(const CNodeRepository&) = delete;
    CNodeRepository& operator=(const CNodeRepository&) = delete;

    const KIVLinkedList& inq_descriptors() const { return descriptors; }
    const KIVLinkedList& inq_pending_generics() const { return pending_generics; }

    /// The first that was registered for the two types, or null.
    CDataConvertorDescriptor* inq_convertor(int from_type, int to_type) const;

    void add_descriptor(CNodeDescriptor* descriptor);

    /// A node class that goes, since its module failed. Its generics wait again.
    void remove_descriptor(const CNodeDescriptor* descriptor);
    void add_generic(CNodeGenericOpDescriptor* generic);

    /// A generic that goes, since it came in with a file and was not needed.
    void remove_generic(const CNodeGenericOpDescriptor* generic);
    void add_convertor(CDataConvertorDescriptor* convertor);
    void add_data_descriptor(CDataDescriptor* descriptor);

private:
    CNodeRepository() = default;

    void store_generics();
    bool store_generic(CNodeGenericOpDescriptor* generic);

    static CNodeRepository* the_repository;

    KIVLinkedList descriptors{true};
    KIVLinkedList convertors{true};
    KIVLinkedList data_descriptors{true};
    KIVLinkedList pending_generics{true};
};
