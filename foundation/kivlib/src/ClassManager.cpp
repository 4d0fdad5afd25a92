#include "kivlib/hdr/ClassManager.h"

#include "kivlib/hdr/ClassDescriptor.h"

ClassManager* ClassManager::inq_main()
{
    static auto* main = new ClassManager;
    return main;
}

ClassDescriptor* ClassManager::find_cd_for(const KIVString& name) const
{
    const auto found = by_name.find(name.str());
    return found == by_name.end() ? nullptr : found->second;
}

gsl::owner<ClassDescriptorIterator*> ClassManager::new_iterator() const
{
    return new ClassDescriptorIterator(*this);
}

void ClassManager::enter(ClassDescriptor* descriptor)
{
    const auto [place, is_new] = by_name.try_emplace(descriptor->inq_name().str(), descriptor);
    if (is_new)
        descriptors.push_back(descriptor);
    else if (place->second->inq_is_from_stream() && !descriptor->inq_is_from_stream())
        place->second->setup_func_refs_from(descriptor);
}
