#pragma once

#include <vector>

class ClassDescriptor;
class ClassManager;

/// Registers the classes of one module. A subclass has two constructors, each of which runs its
/// private `init()`, where it passes every descriptor to `add`: the one that takes a class manager
/// then calls `setup`, for a module loaded at run time; the other calls `static_link_setup`.
class DLLInitialiser {
public:
    DLLInitialiser(const DLLInitialiser&) = delete;
    DLLInitialiser& operator=(const DLLInitialiser&) = delete;

protected:
    DLLInitialiser() = default;
    ~DLLInitialiser() = default;

    /// The class manager keeps the descriptor from `setup` on.
    void add(ClassDescriptor* descriptor) { descriptors.push_back(descriptor); }
    void setup(ClassManager* manager);
    void static_link_setup();

private:
    std::vector<ClassDescriptor*> descriptors;
};
