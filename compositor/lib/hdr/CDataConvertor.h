#pragma once

#include "compositor/lib/hdr/OpMemory.h"
#include "kivlib/hdr/KIVObject.h"

class AbortPanel;
class CData;
class CDataConvertor;
class CNodeOp;

/// A way from one type of data to another. It enters itself with the node repository, and belongs
/// to it from then on. The type that it starts from has to be registered already.
class CDataConvertorDescriptor : public KIVObject {
public:
    CDataConvertorDescriptor(int from_type, int to_type);

    /// The op owns it.
    virtual gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) = 0;

    int inq_from_type() const { return from_type; }
    int inq_to_type() const { return to_type; }

private:
    int from_type;
    int to_type;
};

/// Carries one op's request, facts and finished data between its own type and its consumer's.
class CDataConvertor {
public:
    explicit CDataConvertor(CNodeOp* owner) : owner(owner) {}
    CDataConvertor(const CDataConvertor&) = delete;
    CDataConvertor& operator=(const CDataConvertor&) = delete;
    virtual ~CDataConvertor() = default;

    static void* operator new(std::size_t size) { return OpMemory::allocate(size); }
    static void* operator new(std::size_t size, std::align_val_t alignment)
    {
        return ::operator new(size, alignment);
    }
    static void operator delete(void* memory) noexcept { OpMemory::release(memory); }
    static void operator delete(void* memory, std::align_val_t alignment) noexcept
    {
        ::operator delete(memory, alignment);
    }

    virtual void convert_request(CData* node_data, CData* converted_data) = 0;
    virtual void convert_immediate(CData* node_data, CData* converted_data) = 0;
    virtual void convert_generated(CData* node_data, CData* converted_data, AbortPanel* abort) = 0;

    /// What changed since the last run.
    virtual void convert_change(CData* node_data, CData* converted_data) = 0;

    /// Whether the converted data can be drawn straight into the consumer's.
    virtual bool inq_can_composite() const { return false; }

    CNodeOp* inq_owner() const { return owner; }

private:
    CNodeOp* owner; // not owned
};
