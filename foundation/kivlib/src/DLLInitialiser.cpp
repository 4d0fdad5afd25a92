#include "kivlib/hdr/DLLInitialiser.h"

#include "kivlib/hdr/ClassManager.h"

void DLLInitialiser::setup(ClassManager* manager)
{
    for (ClassDescriptor* descriptor : descriptors)
        manager->enter(descriptor);
}

void DLLInitialiser::static_link_setup()
{
    setup(ClassManager::inq_main());
}
