#pragma once

#include "kivlib/hdr/Owned.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

class ClassDescriptor;
class ClassDescriptorIterator;
class KIVString;

/// All class records of the process, by name, in the order of their registration. Records are
/// never removed.
class ClassManager {
public:
    static ClassManager* inq_main();

    /// Null when the name is unknown.
    ClassDescriptor* find_cd_for(const KIVString& name) const;

    /// The caller deletes it.
    gsl::owner<ClassDescriptorIterator*> new_iterator() const;

    /// A record already there under the name wins. One that came from a stream is completed by the
    /// first that comes with its code.
    void enter(ClassDescriptor* descriptor);

private:
    friend class ClassDescriptorIterator;

    std::vector<ClassDescriptor*> descriptors;
    std::unordered_map<std::string, ClassDescriptor*> by_name;
};

/// A walk over all class records, which may grow meanwhile.
class ClassDescriptorIterator {
public:
    explicit ClassDescriptorIterator(const ClassManager& manager) : manager(manager) {}

    bool is_valid() const { return index < manager.descriptors.size(); }
    ClassDescriptor* inq_current() const { return manager.descriptors[index]; }
    void advance() { ++index; }

private:
    const ClassManager& manager;
    std::size_t index = 0;
};
