#include "kivlib/hdr/DLLInitialiser.h"

#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/ClassManager.h"

DLLInitialiser::DLLInitialiser() = default;

/// A descriptor that has entered itself with the class manager stays.
DLLInitialiser::~DLLInitialiser()
{
    for (std::unique_ptr<ClassDescriptor>& descriptor : descriptors)
        if (descriptor && ClassManager::inq_main()->find_cd_for(descriptor->inq_name()) ==
                              descriptor.get()) [[maybe_unused]]
            const ClassDescriptor* kept = descriptor.release();
}

void DLLInitialiser::add(gsl::owner<ClassDescriptor*> descriptor)
{
    descriptors.emplace_back(descriptor);
}

/// A record that is superseded is kept as well: its class may hold on to it.
void DLLInitialiser::setup(ClassManager* manager)
{
    for (std::unique_ptr<ClassDescriptor>& descriptor : descriptors)
        manager->enter(descriptor.release());
}

void DLLInitialiser::static_link_setup()
{
    setup(ClassManager::inq_main());
}
