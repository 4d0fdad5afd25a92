#include "frontend/montaray_scene/find_node_class.h"

#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "kivlib/hdr/ModuleFolder.h"

namespace {
template <class Fits> CNodeDescriptor* find_if(Fits fits)
{
    for (auto* descriptor :
         CNodeRepository::inq_repository()->inq_descriptors().of<CNodeDescriptor>())
        if (fits(*descriptor))
            return descriptor;
    return nullptr;
}

CNodeDescriptor* find_class(const KIVString& name)
{
    return find_if([&](const CNodeDescriptor& d) { return d.inq_name() == name; });
}

CNodeDescriptor* find_type(const KIVString& name)
{
    return find_if([&](const CNodeDescriptor& d) { return d.inq_user_type_name() == name; });
}

CNodeDescriptor& find_class(const Place& place)
{
    const KIVString name = place.text();
    KIVString fault;
    CNodeDescriptor* found = find_class(name);
    if (!found && ModuleFolder::load_class(name, fault))
        found = find_class(name);
    if (found)
        return *found;
    place.refuse("the name of a node class, such as \"CNodeCamera\"" +
                 (fault.is_null() ? std::string() : " (" + fault.str() + ")"));
}

/// Users' names don't tell where their module lies, so all are loaded.
CNodeDescriptor& find_type(const Place& place)
{
    const KIVString name = place.text();
    CNodeDescriptor* found = find_type(name);
    if (!found) {
        ModuleFolder::load_all();
        found = find_type(name);
    }
    if (found)
        return *found;
    place.refuse("the name of a kind of node, such as \"Camera\"");
}
} // namespace

CNodeDescriptor& find_node_class(const Place& node)
{
    const auto by_class = node.find("class");
    if (by_class && node.find("type"))
        node.at("type").refuse("a class or a type and not both");
    return by_class ? find_class(*by_class) : find_type(node.at("type"));
}
