#include "compositor/lib/hdr/typeid.h"

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/KIVString.h"
#include "kivlib/hdr/report_error.h"

#include <deque>

namespace {
/// Names stay where they are: callers keep references.
std::deque<KIVString>& registered_names()
{
    static auto* names = new std::deque<KIVString>;
    return *names;
}
} // namespace

int register_type(const KIVString& name)
{
    std::deque<KIVString>& names = registered_names();
    const auto found = std::ranges::find(names, name);
    const auto id = static_cast<int>(found - names.begin());
    if (found == names.end())
        names.push_back(name);
    else
        report_here() << "Warning: cdata type '" << name << "'already registered.\n";
    return id;
}

const KIVString& inq_type_name(int id)
{
    static const KIVString unknown("Unknown");
    const std::deque<KIVString>& names = registered_names();
    if (id < 0 || static_cast<std::size_t>(id) >= names.size())
        return unknown;
    return names[static_cast<std::size_t>(id)];
}
