#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstddef>
#include <typeinfo>

class ClassDescriptor;
class ClassManager;

/// A stored class as the compiler knows it: itself, its C++ base, its size, and where its record
/// is kept. It answers for objects that are still being read.
struct StoredType {
    const std::type_info* type;
    const StoredType* base;
    std::size_t size;
    ClassDescriptor* (*record)();

    bool is_a(const StoredType& wanted) const
    {
        return this == &wanted || *type == *wanted.type || (base && base->is_a(wanted));
    }
};

/// Run-time record of a class: its name, the name of its base, its reader and its version. The
/// class manager keeps it to the end of the process.
class ClassDescriptor : public KIVObject {
public:
    using Base = KIVObject;

    /// Enters itself with `manager`, if one is given. `version` -1: the class names no version of
    /// its own. `reader` is null for a class that can't be read.
    ClassDescriptor(const char* name, const char* base_name, KIVReadFunction reader, int version,
                    ClassManager* manager);

    /// A descriptor of a class whose code may not be loaded: no reader, no functions. One without a
    /// name is an error.
    explicit ClassDescriptor(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    ClassDescriptor* inq_class_descriptor() const override { return inq_class_descriptor_s(); }
    const char* class_name() const override { return "ClassDescriptor"; }

    static ClassDescriptor* inq_class_descriptor_s();
    static void set_class_descriptor_s(ClassDescriptor* descriptor);
    static KIVReadFunction inq_read_constructor();
    static ClassDescriptor* read_from(KIVIStream& stream);

    virtual int inq_version() const { return version; }

    /// Takes over base, version and functions of another descriptor of the same class, whose code
    /// is loaded.
    virtual void setup_func_refs_from(const ClassDescriptor* other);

    /// The descriptor has come in from a stream.
    virtual void did_load();

    /// Whether this class, or one up its chain of base names, is called `wanted`.
    bool is_subclass_of(const KIVString& wanted) const { return has_in_chain(wanted); }
    bool is_subclass_of(const char* wanted) const { return has_in_chain(wanted ? wanted : ""); }

    /// True until the code of the class is loaded.
    bool inq_is_from_stream() const { return is_from_stream; }

    /// The version that a class header carries: the newest of the class and its C++ bases, never
    /// below 1. One count runs across all classes, so every reader along the chain understands it.
    int inq_stored_version() const;

    const KIVString& inq_name() const { return name; }
    const KIVString& inq_base_name() const { return base_name; }
    KIVReadFunction inq_reader() const { return reader; }

    /// Null for a descriptor that came from a stream.
    const StoredType* inq_stored_type() const { return type; }

    /// The class manager's record of the name gets it too, if it came from a stream.
    void set_stored_type(const StoredType* stored_type);

protected:
    /// Loads the module of this class, if it is installed; its own descriptor then completes this
    /// one. A module is looked for by class name in the module folder alone.
    void load_dll() const;

private:
    friend class ConnectOStream;

    bool has_in_chain(std::string_view wanted) const;

    KIVString name;
    KIVString base_name;
    KIVReadFunction reader = nullptr;
    int version = -1;
    bool is_from_stream = false;
    const StoredType* type = nullptr;

    // The class's index in the class table of the stream that wrote it last.
    mutable std::uint32_t table_epoch = 0;
    mutable unsigned table_index = 0;
};
