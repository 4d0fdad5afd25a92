#include "kivlib/hdr/KIVDefaults.h"

#include <unordered_map>

namespace {
std::unordered_map<std::string, int>& inq_settings()
{
    static std::unordered_map<std::string, int> settings;
    return settings;
}
} // namespace

bool KIVDefaults::inq_default(const KIVString& key, bool fallback)
{
    return inq_default(key, static_cast<int>(fallback)) != 0;
}

int KIVDefaults::inq_default(const KIVString& key, int fallback)
{
    const auto found = inq_settings().find(key.str());
    return found == inq_settings().end() ? fallback : found->second;
}

void KIVDefaults::set_default(const KIVString& key, int value)
{
    inq_settings()[key.str()] = value;
}

void KIVDefaults::clear_default(const KIVString& key)
{
    inq_settings().erase(key.str());
}
