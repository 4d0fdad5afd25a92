#pragma once

#include "kivlib/hdr/Owned.h"
#include "kivlib/hdr/montaray_version.h"

#include <memory>
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
    DLLInitialiser();

    /// Descriptors that were not set up go: `init` has thrown.
    ~DLLInitialiser();

    /// The class manager keeps the descriptor from `setup` on.
    void add(gsl::owner<ClassDescriptor*> descriptor);
    void setup(ClassManager* manager);
    void static_link_setup();

private:
    std::vector<std::unique_ptr<ClassDescriptor>> descriptors;
};

using ModuleSetup = void (*)(ClassManager*);

/// Stands in the file of a module, with the release of the library behind it.
#define MONTARAY_MODULE_MARK "montaray module for release "

/// Once in a module that is loaded at run time: the library runs the subclass of `DLLInitialiser`
/// when it has loaded it.
// clang-format off
#define KIV_MODULE(Initialiser)                                                                    \
    extern "C" {                                                                                   \
    __attribute__((visibility("default"))) extern const char montaray_module_mark[];               \
    __attribute__((used)) const char montaray_module_mark[] =                                      \
        MONTARAY_MODULE_MARK MONTARAY_VERSION;                                                     \
    __attribute__((visibility("default"))) void montaray_module_setup(ClassManager* manager)       \
    {                                                                                              \
        const Initialiser module(manager);                                                         \
    }                                                                                              \
    }                                                                                              \
    static_assert(true)
// clang-format on
